#include "core/storage/deleted_videos.h"

#include <algorithm>
#include <utility>

#include "base/files.h"

#include "ports/user_defaults.h"

#include "core/storage/data_layout.h"

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

}  // namespace

void DeletedVideos::keep(Entry entry) {
    UserDefaults& defaults = storage_.userDefaults();
    const std::string id = entry.video.id;
    removeKept(id);
    for (const auto& key : layout::keysOfVideo(id))
        copyValue(defaults, key, layout::deletedKey(key));
    // The document is written again from the working copy, unless that cannot be read.
    const auto document = readFile(storage_.timelineFile(id));
    if (document && document.value() != defaults.data(layout::timelineKey(id)))
        defaults.setData(layout::deletedDocumentKey(id), *document);
    defaults.setBoolean(layout::deletedVideoKey(id), true);
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
    defaults.remove(layout::deletedVideoKey(videoId));
    for (const auto& key : layout::keysOfVideo(videoId))
        defaults.remove(layout::deletedKey(key));
    defaults.remove(layout::deletedDocumentKey(videoId));
}

void DeletedVideos::finish(const std::vector<VideosData>& list) {
    UserDefaults& defaults = storage_.userDefaults();
    const std::string prefix = layout::deletedVideoKey({});
    for (const auto& key : defaults.keys(prefix)) {
        const std::string id = key.substr(prefix.size());
        if (!isInList(list, id)) {
            if (defaults.boolean(key))
                removeData(id);
        } else if (!defaults.data(layout::timelineKey(id))) {
            restoreData(id);  // an older copy of the list brought the entry back
        }
        removeKept(id);
    }
}

void DeletedVideos::listReplaced(const std::vector<VideosData>& list) {
    std::vector<std::string> there;
    for (const Entry& entry : entries_)
        if (isInList(list, entry.video.id))
            there.push_back(entry.video.id);
    for (const auto& id : there) {
        if (!storage_.userDefaults().data(layout::timelineKey(id)))
            restoreData(id);
        forget(id);
    }
}

void DeletedVideos::forgetAll() {
    while (!entries_.empty())
        forget(std::string(entries_.back().video.id));
}

}  // namespace tembrix
