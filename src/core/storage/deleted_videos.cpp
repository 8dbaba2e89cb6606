#include "core/storage/deleted_videos.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/files.h"

#include "ports/user_defaults.h"

#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/storage/data_layout.h"
#include "core/storage/deleted_timeline.h"
#include "core/storage/set_aside.h"

namespace tembrix {

namespace {

// A value of one type that is absent as another.
bool copyValue(UserDefaults& defaults, const std::string& from, const std::string& to) {
    if (const auto data = defaults.data(from))
        defaults.setData(to, *data);
    else if (const auto text = defaults.text(from))
        defaults.setText(to, *text);
    else if (const auto date = defaults.date(from))
        defaults.setDate(to, *date);
    else
        return false;
    return true;
}

bool isInList(const std::vector<VideosData>& list, const std::string& videoId) {
    return std::any_of(list.begin(), list.end(),
                       [&](const VideosData& video) { return video.id == videoId; });
}

bool isStored(const UserDefaults& defaults, const std::string& key) {
    const auto keys = defaults.keys(key);
    return !keys.empty() && keys.front() == key;
}

// The entry is in the list although it was deleted. What is there was stored after the deletion and
// stays in force. Only what is missing is taken from what the deletion kept.
void fillMissing(InMemoryStorageManager& storage, const std::string& videoId) {
    UserDefaults& defaults = storage.userDefaults();
    const std::string key = layout::timelineKey(videoId);
    const auto present = storage.loadTimeline(videoId);
    const auto working = defaults.data(key);
    if (working && decode<TimelineLines>(*working)) {
        const auto kept = deletedTimeline(defaults, videoId);
        const auto document = kept && *kept != present ? encode(*kept).optional() : std::nullopt;
        if (document)
            setAside(defaults, key, *document);
    } else {
        copyValue(defaults, layout::deletedKey(key), key);
    }
    for (const auto& each : layout::keysOfVideo(videoId))
        if (!isStored(defaults, each))
            copyValue(defaults, layout::deletedKey(each), each);
    std::error_code error;
    const auto file = storage.timelineFile(videoId);
    if (const auto document = defaults.data(layout::deletedDocumentKey(videoId));
        document && !std::filesystem::exists(file, error) && !error)
        (void)replaceFile(file, *document);
    storage.scheduleSaveToDisk();
}

}  // namespace

// The mark of the entry is there whenever one of the other keys is, so that finish() finds them.
void DeletedVideos::keep(Entry entry) {
    UserDefaults& defaults = storage_.userDefaults();
    const std::string id = entry.video.id;
    removeKept(id);
    defaults.setBoolean(layout::deletedVideoKey(id), true);
    for (const auto& key : layout::keysOfVideo(id))
        copyValue(defaults, key, layout::deletedKey(key));
    // The document is written again from the working copy, unless that cannot be read.
    const auto document = readFile(storage_.timelineFile(id));
    if (document && document.value() != defaults.data(layout::timelineKey(id)))
        defaults.setData(layout::deletedDocumentKey(id), *document);
    entries_.push_back(std::move(entry));
}

void DeletedVideos::removeData(const std::string& videoId) {
    for (const auto& key : layout::keysOfVideo(videoId))
        storage_.userDefaults().remove(key);
    storage_.deleteTimelineFile(videoId);
    storage_.userDefaults().setBoolean(layout::deletedVideoKey(videoId), false);
}

void DeletedVideos::restoreData(const std::string& videoId) {
    UserDefaults& defaults = storage_.userDefaults();
    defaults.setBoolean(layout::deletedVideoKey(videoId), true);
    for (const auto& key : layout::keysOfVideo(videoId))
        if (!copyValue(defaults, layout::deletedKey(key), key))
            defaults.remove(key);
    if (const auto document = defaults.data(layout::deletedDocumentKey(videoId)))
        (void)replaceFile(storage_.timelineFile(videoId), *document);
    storage_.scheduleSaveToDisk();
}

void DeletedVideos::forget(const std::string& videoId) {
    removeKept(videoId);
    std::erase_if(entries_, [&](const Entry& entry) { return entry.video.id == videoId; });
}

void DeletedVideos::removeKept(const std::string& videoId) {
    UserDefaults& defaults = storage_.userDefaults();
    for (const auto& key : layout::keysOfVideo(videoId))
        defaults.remove(layout::deletedKey(key));
    defaults.remove(layout::deletedDocumentKey(videoId));
    defaults.remove(layout::deletedVideoKey(videoId));
}

void DeletedVideos::finish(const std::vector<VideosData>& list) {
    UserDefaults& defaults = storage_.userDefaults();
    const std::string prefix = layout::deletedVideoKey({});
    for (const auto& key : defaults.keys(prefix)) {
        const std::string id = key.substr(prefix.size());
        if (isInList(list, id))
            fillMissing(storage_, id);
        else if (defaults.boolean(key))
            removeData(id);
        removeKept(id);
    }
}

void DeletedVideos::listReplaced(const std::vector<VideosData>& list) {
    std::vector<std::string> there;
    for (const Entry& entry : entries_)
        if (isInList(list, entry.video.id))
            there.push_back(entry.video.id);
    for (const auto& id : there) {
        fillMissing(storage_, id);
        forget(id);
    }
}

void DeletedVideos::forgetAll() {
    while (!entries_.empty())
        forget(std::string(entries_.back().video.id));
}

}  // namespace tembrix
