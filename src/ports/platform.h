#pragma once

#include <filesystem>

#include "ports/directories.h"

namespace tembrix {

class Bookmarks;
class ImageCodec;
class Keychain;
class Locale;
class Log;
class Media;
class MovieRenderer;
class Panels;
class PictureRenderer;
class PlayerFactory;
class ProcessRunner;
class PropertyList;
class Scheduler;
class TextMeasure;
class Texts;
class UserDefaults;

// One implementation of every port. The program uses adapters, tests use fakes. The referenced
// objects must outlive the CoreServices created with them.
struct Platform {
    Log& log;
    Directories directories;
    std::filesystem::path resources;  // folder of the texts, standard collections and guides
    Scheduler& scheduler;
    UserDefaults& defaults;
    Keychain& keychain;
    Bookmarks& bookmarks;
    PropertyList& propertyLists;
    const Texts& texts;
    const Locale& locale;
    Panels& panels;
    ProcessRunner& processes;
    PlayerFactory& players;
    Media& media;
    MovieRenderer& renderer;
    ImageCodec& images;
    PictureRenderer& pictures;
    TextMeasure& textMeasure;
};

}  // namespace tembrix
