#include "core/storage/video_files_manager.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

#include "base/files.h"
#include "base/utf8_text.h"
#include "base/uuid.h"

#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "core/storage/set_aside.h"
#include "core/storage/video_list_store.h"

namespace tembrix {

namespace {

using VideoList = std::vector<VideosData>;

VideosData& entryOf(VideosData& video) {
    return video;
}

VideosData& entryOf(FilesFile& file) {
    return file.videoData;
}

// Changes the matching entries in a list of videos or of files. Returns whether there were any.
template <class List, class Matches, class Change>
bool changeEntries(List& list, const Matches& matches, const Change& change) {
    bool found = false;
    for (auto& element : list) {
        VideosData& video = entryOf(element);
        if (matches(video)) {
            change(video);
            found = true;
        }
    }
    return found;
}

auto hasBookmark(const Bytes& bookmark) {
    return [&bookmark](const VideosData& video) { return video.bookmark == bookmark; };
}

auto hasId(const std::string& id) {
    return [&id](const VideosData& video) { return video.id == id; };
}

}  // namespace

VideoFilesManager::VideoFilesManager(InMemoryStorageManager& storage, Bookmarks& bookmarks,
                                     Directories directories, const Texts& texts, Log& log)
    : storage_(storage),
      bookmarks_(bookmarks),
      directories_(std::move(directories)),
      texts_(texts),
      log_(log),
      deleted_(storage) {}

void VideoFilesManager::start() {
    for (const auto& folder :
         {directories_.documents, directories_.temporary / layout::previewFolder}) {
        if (const auto made = makeFolder(folder); !made)
            log_.line("❌ Storage: Error making a folder - " + made.error().text);
    }
    const RepairScope repair;  // what is stored here, the user has not changed
    const bool readable = loadVideosData();
    rebuildFiles();
    if (readable)
        deleted_.finish(videosData_);
    // A list that cannot be read is not written here, because it would be replaced by an empty one.
    if (readable && !storage_.userDefaults().boolean(layout::videosCleanupDoneKey)) {
        saveVideosData();
        storage_.userDefaults().setBoolean(layout::videosCleanupDoneKey, true);
    }
}

void VideoFilesManager::setUpdateFiles(
    std::function<void(const std::vector<FilesFile>&)> callback) {
    updateFiles_ = std::move(callback);
}

void VideoFilesManager::publish() {
    if (updateFiles_)
        updateFiles_(files_);
}

bool VideoFilesManager::loadVideosData() {
    UserDefaults& defaults = storage_.userDefaults();
    auto stored = defaults.data(layout::videosDataKey);
    if (!stored) {
        videosData_.clear();
        return true;
    }
    if (const auto old = decode<std::vector<VideosDataOldFormat>>(*stored); old && !old->empty()) {
        migrate(*old);
        stored = defaults.data(layout::videosDataKey);
        if (!stored)
            return true;
    }
    auto decoded = decode<VideoList>(*stored);
    if (!decoded) {
        log_.line(texts_.text("videosDataLoadError") + " " + decoded.error().text);
        setAside(defaults, log_, layout::videosDataKey, *stored);
        return false;
    }
    VideoList list = *decoded;
    for (auto& video : list) {
        if (!video.isFavorite)
            video.isFavorite = false;
    }
    renewBookmarks(list);
    videosData_ = cleaned(list);
    if (videosData_ != *decoded)
        saveVideosData();
    return true;
}

// Bookmarks of earlier versions do not contain the content. A new recording under the old name
// would get the marks of the old one.
void VideoFilesManager::renewBookmarks(std::vector<VideosData>& list) const {
    for (auto& video : list)
        if (auto renewed = bookmarks_.withContent(video.bookmark))
            video.bookmark = std::move(*renewed);
}

void VideoFilesManager::migrate(const std::vector<VideosDataOldFormat>& old) {
    log_.line("🔄 Migrating timelines...");
    VideoList videos;
    for (const auto& entry : old) {
        if (!entry.timelines.empty())
            storage_.saveTimeline(entry.timelines, entry.id);
        videos.push_back({entry.bookmark, entry.id, entry.customName, entry.isFavorite});
    }
    const auto encoded = encode(videos);
    if (!encoded) {
        log_.line("❌ Error during migration: " + encoded.error().text);
        return;
    }
    storeVideoList(storage_.userDefaults(), *encoded);
    log_.line("✅ Migration completed: " + std::to_string(old.size()) + " videos migrated");
}

// An entry whose file cannot be found is kept, because its disk may be disconnected. An entry whose
// path now belongs to another file is kept as well, because recorders reuse file names.
std::vector<VideosData> VideoFilesManager::withoutDuplicates(
    const std::vector<VideosData>& list) const {
    VideoList kept;
    std::set<std::string> ids;
    std::map<std::filesystem::path, std::vector<const Bytes*>> bookmarksAt;
    for (const auto& video : list) {
        if (!ids.insert(video.id).second)
            continue;
        if (const auto resolved = bookmarks_.resolve(video.bookmark)) {
            auto& known = bookmarksAt[resolved->path];
            if (std::any_of(known.begin(), known.end(), [&](const Bytes* bookmark) {
                    return bookmarks_.areOfOneFile(*bookmark, video.bookmark);
                }))
                continue;
            known.push_back(&video.bookmark);
        }
        kept.push_back(video);
    }
    return kept;
}

// Updates the list shown on screen from the stored list. Existing previews are kept.
void VideoFilesManager::rebuildFiles() {
    std::vector<FilesFile> files;
    for (const auto& video : videosData_) {
        const auto before = fileWith(hasId(video.id));
        files.push_back({video, before ? before->preview : nullptr});
    }
    files_ = std::move(files);
}

void VideoFilesManager::saveVideosData() {
    auto unique = cleaned(videosData_);
    if (unique.size() != videosData_.size()) {
        videosData_ = std::move(unique);
        rebuildFiles();
    }
    storeList();
}

void VideoFilesManager::storeList() {
    const auto encoded = encode(videosData_);
    if (!encoded) {
        log_.line(texts_.text("videosDataSaveError") + " " + encoded.error().text);
        return;
    }
    storeVideoList(storage_.userDefaults(), *encoded);
    if (listStored_)
        listStored_();
}

std::optional<FilesFile> VideoFilesManager::addVideo(const std::filesystem::path& file) {
    const auto bookmark = bookmarks_.make(file);
    if (!bookmark)
        return std::nullopt;
    if (const VideosData* known = findByFile(file))
        return fileWith(hasId(known->id));
    const VideosData video{*bookmark, replaced(freshId(), "-", ""), std::nullopt, false};
    videosData_.push_back(video);
    files_.push_back({video, nullptr});
    saveVideosData();
    publish();
    return fileWith(hasId(video.id));
}

std::optional<FilesFile> VideoFilesManager::addVideoNamed(const std::filesystem::path& file,
                                                          const std::string& name) {
    const auto added = addVideo(file);
    if (!added)
        return std::nullopt;
    renameVideo(*added, name);
    return fileWith(hasId(added->videoData.id));
}

std::optional<FilesFile> VideoFilesManager::addMatch(const std::filesystem::path& file,
                                                     const VideoMetadata& match,
                                                     const std::string& name) {
    const auto added = addVideo(file);
    if (!added)
        return std::nullopt;
    const std::string id = added->videoData.id;
    if (const auto encoded = encode(match))
        storage_.userDefaults().setData(layout::matchKey(id), *encoded);
    renameVideo(*added, name);
    return fileWith(hasId(id));
}

void VideoFilesManager::appendFile(const FilesFile& file) {
    files_.push_back(file);
    videosData_.push_back(file.videoData);
    saveVideosData();
    publish();
}

std::vector<FilesFile> VideoFilesManager::reloadFiles() {
    loadVideosData();
    if (!storage_.userDefaults().data(layout::videosDataKey))
        deleted_.forgetAll();
    deleted_.listReplaced(videosData_);
    rebuildFiles();
    publish();
    return files_;
}

Result<void> VideoFilesManager::deleteVideo(const FilesFile& file) {
    const VideosData* found = findById(file.videoData.id);
    if (!found)
        return {};
    const VideosData video = *found;
    if (auto kept = keepTimeline(video); !kept)
        return kept;
    const auto shown = fileWith(hasId(video.id));
    deleted_.keep({video, title(file), static_cast<std::size_t>(found - videosData_.data()),
                   shown ? shown->preview : nullptr});
    std::erase_if(videosData_, hasId(video.id));
    rebuildFiles();
    saveVideosData();
    deleted_.removeData(video.id);
    publish();
    return {};
}

const DeletedVideos::Entry* VideoFilesManager::lastDeleted() const {
    return deleted_.entries().empty() ? nullptr : &deleted_.entries().back();
}

bool VideoFilesManager::takeBackDeletion() {
    if (deleted_.entries().empty())
        return false;
    const DeletedVideos::Entry entry = deleted_.entries().back();
    if (entryOfFile(entry.video))
        return false;
    deleted_.restoreData(entry.video.id);
    const auto place = std::min(entry.place, videosData_.size());
    videosData_.insert(videosData_.begin() + static_cast<std::ptrdiff_t>(place), entry.video);
    rebuildFiles();
    saveVideosData();
    deleted_.forget(entry.video.id);
    setPreview(entry.video.id, entry.preview);
    return true;
}

const VideosData* VideoFilesManager::entryOfFile(const VideosData& video) const {
    const auto file = resolveVideoURL(video.bookmark);
    return file ? findByFile(*file, video.id) : nullptr;
}

MarkCounts VideoFilesManager::countMarks(const std::string& videoId) const {
    MarkCounts counts;
    for (const auto& line : storage_.loadTimeline(videoId)) {
        int& count = line->id == drawingsLineId() ? counts.drawings : counts.stamps;
        count += static_cast<int>(line->stamps.size());
    }
    return counts;
}

// The list without duplicates. A duplicate whose timeline cannot be kept stays in the list.
// Entries that are dropped because their id occurs twice lose nothing.
std::vector<VideosData> VideoFilesManager::cleaned(const std::vector<VideosData>& list) {
    VideoList kept = withoutDuplicates(list);
    for (const auto& video : list) {
        if (std::none_of(kept.begin(), kept.end(), hasId(video.id)) && !keepTimeline(video))
            kept.push_back(video);
    }
    return kept;
}

Result<void> VideoFilesManager::keepTimeline(const VideosData& video) {
    if (!keeper_)
        return {};
    const auto timelines = storage_.loadTimeline(video.id);
    return timelines.empty() ? Result<void>()
                             : keeper_->saveTimelineBeforeDeletion(video, timelines);
}

void VideoFilesManager::renameVideo(const FilesFile& file, const std::string& name) {
    const std::string id = file.videoData.id;
    change(hasId(id), [&](VideosData& video) { video.customName = name; });
}

void VideoFilesManager::toggleFavorite(const std::string& videoId) {
    change(hasId(videoId),
           [](VideosData& video) { video.isFavorite = !video.isFavorite.value_or(false); });
}

void VideoFilesManager::noteOpening(const std::string& videoId, Date moment) {
    storage_.userDefaults().setDate(layout::lastOpenedKey(videoId), moment);
}

std::optional<Date> VideoFilesManager::lastOpening(const std::string& videoId) const {
    return storage_.userDefaults().date(layout::lastOpenedKey(videoId));
}

bool VideoFilesManager::rebindVideo(const std::string& videoId, const std::filesystem::path& file) {
    const auto bookmark = bookmarks_.make(file);
    return bookmark && !findByFile(file, videoId) &&
           change(hasId(videoId), [&](VideosData& video) { video.bookmark = *bookmark; });
}

template <class Matches, class Change>
bool VideoFilesManager::change(const Matches& matches, const Change& edit) {
    if (!changeEntries(videosData_, matches, edit))
        return false;
    changeEntries(files_, matches, edit);
    storeList();  // makes no duplicates, so the files need not be examined
    publish();
    return true;
}

void VideoFilesManager::setPreview(const std::string& videoId,
                                   std::shared_ptr<const ImageBuffer> preview) {
    for (auto& file : files_) {
        if (file.videoData.id == videoId) {
            file.preview = std::move(preview);
            publish();
            return;
        }
    }
}

template <class Matches>
std::optional<FilesFile> VideoFilesManager::fileWith(const Matches& matches) const {
    const auto found = std::find_if(files_.begin(), files_.end(),
                                    [&](const FilesFile& file) { return matches(file.videoData); });
    if (found == files_.end())
        return std::nullopt;
    return *found;
}

const VideosData* VideoFilesManager::findById(const std::string& videoId) const {
    const auto found = std::find_if(videosData_.begin(), videosData_.end(), hasId(videoId));
    return found == videosData_.end() ? nullptr : &*found;
}

const VideosData* VideoFilesManager::findByBookmark(const Bytes& bookmark,
                                                    const std::string& preferredId) const {
    if (const VideosData* video = findById(preferredId); video && video->bookmark == bookmark)
        return video;
    const auto found = std::find_if(videosData_.begin(), videosData_.end(), hasBookmark(bookmark));
    return found == videosData_.end() ? nullptr : &*found;
}

const VideosData* VideoFilesManager::findByFile(const std::filesystem::path& file,
                                                const std::string& exceptId) const {
    const auto bookmark = bookmarks_.make(file);
    const auto path = bookmark ? resolveVideoURL(*bookmark) : std::nullopt;
    if (!path)
        return nullptr;
    const auto findIf = [&](const auto& matches) {
        const auto found = std::find_if(
            videosData_.begin(), videosData_.end(),
            [&](const VideosData& video) { return video.id != exceptId && matches(video); });
        return found == videosData_.end() ? nullptr : &*found;
    };
    if (const VideosData* video = findIf(hasBookmark(*bookmark)))
        return video;
    return findIf([&](const VideosData& video) { return resolveVideoURL(video.bookmark) == path; });
}

// The marks of one match must not be shown on the video of another.
std::optional<std::filesystem::path> VideoFilesManager::resolveVideoURL(
    const Bytes& bookmark) const {
    auto resolved = bookmarks_.resolve(bookmark);
    if (!resolved || resolved->replaced)
        return std::nullopt;
    return std::move(resolved->path);
}

std::string VideoFilesManager::displayName(const FilesFile& file) const {
    if (file.videoData.customName && !file.videoData.customName->empty())
        return *file.videoData.customName;
    if (const auto path = resolveVideoURL(file.videoData.bookmark))
        return pathText(path->filename());
    return "Видео недоступно";
}

MatchTitle VideoFilesManager::title(const FilesFile& file) const {
    const VideosData& video = file.videoData;
    if (!video.customName || video.customName->empty())
        return {displayName(file), std::nullopt};
    const auto stored = storage_.userDefaults().data(layout::matchKey(video.id));
    const auto match = stored ? decode<VideoMetadata>(*stored).optional() : std::nullopt;
    MatchTitle title = matchTitle(*video.customName, match);
    if (title.name.empty())
        title.name = displayName({{video.bookmark, video.id, std::nullopt, {}}, nullptr});
    return title;
}

}  // namespace tembrix
