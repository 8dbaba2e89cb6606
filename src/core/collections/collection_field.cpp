// The play field of a collection: its picture and its record in the program's own folder.

#include <system_error>

#include "base/files.h"
#include "base/json_style.h"
#include "base/utf8_text.h"
#include "base/uuid.h"

#include "ports/scheduler.h"

#include "core/collections/custom_collection_manager.h"
#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

constexpr double defaultWidth = 100.0;
constexpr double defaultHeight = 60.0;

// Converts a display name to a file name. It must not contain a path separator.
std::string fileStem(const std::string& collectionName) {
    return replaced(collectionName, "/", "_");
}

}  // namespace

std::filesystem::path CustomCollectionManager::fieldFolder() const {
    return services_.storage.dataFolder() / layout::playFieldsFolder;
}

// Whether another collection's field uses the picture of this name. That happens if that collection
// was renamed, or if both have the same name before the first save.
bool CustomCollectionManager::isPictureOfAnother(const std::string& name) const {
    std::error_code ignored;
    if (!std::filesystem::exists(fieldFolder() / pathFromText(name), ignored))
        return false;
    for (const auto& info : services_.index.collections()) {
        if (info.id == collectionID_)
            continue;
        const auto other = services_.storage.loadCollection(info.id);
        if (other && other->playField && other->playField->imagePath == name)
            return true;
    }
    return false;
}

// The collection's name, with a number if there is such a picture already. Even if no collection
// uses it, it may be about to be deleted. A collection replaces its own picture.
std::string CustomCollectionManager::fieldFileStem() const {
    const auto isTaken = [this](const std::string& name) {
        std::error_code ignored;
        const bool own = playField_ && playField_->imagePath == name;
        return own ? isPictureOfAnother(name)
                   : std::filesystem::exists(fieldFolder() / pathFromText(name), ignored);
    };
    auto stem = fileStem(collectionName_);
    for (int counter = 1; isTaken(stem + ".png"); ++counter)
        stem = fileStem(collectionName_) + " (" + std::to_string(counter) + ")";
    return stem;
}

bool CustomCollectionManager::setFieldImage(const std::filesystem::path& image) {
    const auto failed = [&](const std::string& why) {
        services_.log.line("❌ Error setting field image: " + why);
        return false;
    };
    const auto stem = fieldFileStem();
    const auto name = stem + ".png";
    const auto target = fieldFolder() / pathFromText(name);
    if (const auto made = makeFolder(fieldFolder()); !made)
        return failed(made.error().text);
    if (const auto copied = replaceFileByCopy(target, image); !copied)
        return failed(copied.error().text);
    const auto bookmark = services_.bookmarks.make(target);
    if (!bookmark)
        return failed("failed to create bookmark");

    auto field = playField_.value_or(
        PlayField{freshId(), "Field", {}, defaultWidth, defaultHeight, std::nullopt});
    field.imagePath = name;
    field.imageBookmark = *bookmark;
    if (!writeFieldRecord(field, stem))
        return false;
    playField_ = std::move(field);
    changed_.emit();
    return saveCollection();
}

bool CustomCollectionManager::writeFieldRecord(const PlayField& field,
                                               const std::string& stem) const {
    const auto json = encode(field, JsonStyle::pretty);
    const auto written = json ? replaceFile(fieldFolder() / pathFromText(stem + ".json"), *json)
                              : Result<void>(json.error());
    if (!written)
        services_.log.line("❌ Error setting field image: " + written.error().text);
    return written.ok();
}

void CustomCollectionManager::removeField() {
    if (!playField_)
        return;
    const auto name = pathFromText(playField_->imagePath).filename();
    const auto image = name.empty() || isPictureOfAnother(pathText(name)) ? std::filesystem::path{}
                                                                          : fieldFolder() / name;
    for (auto& tag : lists_.tags)
        if (tag.mapEnabled == true)
            tag.mapEnabled = false;
    playField_.reset();
    changed_.emit();
    saveCollection();
    if (image.empty())
        return;
    // The picture is deleted last, and only if the collection was stored without it. This object
    // may be destroyed meanwhile.
    services_.scheduler.background(Priority::userInitiated,
                                   [image, &defaults = services_.storage.userDefaults()] {
                                       defaults.makeDurable();
                                       std::error_code ignored;
                                       if (defaults.status().allStored)
                                           std::filesystem::remove(image, ignored);
                                   });
}

void CustomCollectionManager::setFieldSize(double width, double height) {
    if (!playField_)
        return;
    playField_->width = width;
    playField_->height = height;
    changed_.emit();
}

}  // namespace tembrix
