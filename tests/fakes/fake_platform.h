#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "ports/platform.h"

#include "fakes/captured_log.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/fake_images.h"
#include "fakes/fake_media.h"
#include "fakes/fake_movie_renderer.h"
#include "fakes/fake_panels.h"
#include "fakes/fake_player.h"
#include "fakes/fake_process_runner.h"
#include "fakes/fake_property_list.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_keychain.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/no_windows.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {

// A platform of fakes with its own folder.
struct FakePlatform {
    // Parts that a test uses instead of the fakes, such as real adapters or parts that outlive one
    // run of the program.
    struct Others {
        Log* log = nullptr;
        std::optional<Directories> directories = {};
        std::optional<std::filesystem::path> resources = {};
        UserDefaults* defaults = nullptr;
        Keychain* keychain = nullptr;
        Bookmarks* bookmarks = nullptr;
        ProcessRunner* processes = nullptr;
        Media* media = nullptr;
        MovieRenderer* renderer = nullptr;
        PictureRenderer* pictures = nullptr;
        TextMeasure* textMeasure = nullptr;
        std::string language = "en";
    };

    TempFolder folder;
    CapturedLog log;
    VirtualScheduler scheduler;
    MemoryUserDefaults defaults;
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;
    FakePropertyList propertyLists;
    FakeTexts texts;
    FakeLocale locale;
    FakePanels panels;
    FakeProcessRunner processes;
    FakePlayerFactory players;
    FakeMedia media;
    FakeMovieRenderer renderer{scheduler};
    FakeImageCodec images;
    FakePictureRenderer pictures;
    FakeTextMeasure measure;
    NoWindows noWindows;

    Platform platform(const Others& others) {
        locale.language = others.language;
        const auto either = []<class Port>(Port* other, Port& fake) -> Port& {
            return other ? *other : fake;
        };
        return {
            .log = either(others.log, static_cast<Log&>(log)),
            .directories = others.directories.value_or(folder.directories()),
            .resources = others.resources.value_or(TEMBRIX_RESOURCES),
            .scheduler = scheduler,
            .defaults = either(others.defaults, static_cast<UserDefaults&>(defaults)),
            .keychain = either(others.keychain, static_cast<Keychain&>(keychain)),
            .bookmarks = either(others.bookmarks, static_cast<Bookmarks&>(bookmarks)),
            .propertyLists = propertyLists,
            .texts = texts,
            .locale = locale,
            .panels = panels,
            .processes = either(others.processes, static_cast<ProcessRunner&>(processes)),
            .players = players,
            .media = either(others.media, static_cast<Media&>(media)),
            .renderer = either(others.renderer, static_cast<MovieRenderer&>(renderer)),
            .images = images,
            .pictures = either(others.pictures, static_cast<PictureRenderer&>(pictures)),
            .textMeasure = either(others.textMeasure, static_cast<TextMeasure&>(measure)),
        };
    }
};

}  // namespace tembrix
