#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/date.h"
#include "base/image.h"
#include "base/log.h"
#include "base/result.h"

#include "ports/bookmarks.h"
#include "ports/directories.h"
#include "ports/texts.h"
#include "ports/user_defaults.h"

#include "core/records/video_records.h"
#include "core/storage/deleted_timeline_keeper.h"
#include "core/storage/deleted_videos.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

// The marks that a video has.
struct MarkCounts {
    int stamps = 0;
    int drawings = 0;
    bool operator==(const MarkCounts&) const = default;
};

// The library: the list of videos that the user added, how it is stored, migrated and cleaned up.
// Videos are never copied. The id of an entry is the key of all data of its video. Main thread
// only.
class VideoFilesManager {
  public:
    VideoFilesManager(InMemoryStorageManager& storage, Bookmarks& bookmarks,
                      Directories directories, const Texts& texts, Log& log);

    // Creates the folders and loads the list. Called once, before anything else.
    void start();
    void setDeletedTimelineKeeper(DeletedTimelineKeeper* keeper) { keeper_ = keeper; }

    const std::vector<FilesFile>& files() const { return files_; }
    const std::vector<VideosData>& videosData() const { return videosData_; }
    // Sets a function that is called with the list after every change.
    void setUpdateFiles(std::function<void(const std::vector<FilesFile>&)> callback);

    // Sets a function that is called after the list was stored.
    void setListStored(std::function<void()> stored) { listStored_ = std::move(stored); }

    std::optional<FilesFile> addVideo(const std::filesystem::path& file);
    std::optional<FilesFile> addVideoNamed(const std::filesystem::path& file,
                                           const std::string& name);
    // Adds a video under the name of its match. A file that is in the list already is renamed.
    std::optional<FilesFile> addMatch(const std::filesystem::path& file, const VideoMetadata& match,
                                      const std::string& name);
    void appendFile(const FilesFile& file);
    std::vector<FilesFile> reloadFiles();
    // Deletes the entry and its timelines. If these cannot be kept in the backup, nothing is
    // deleted. Until the program ends, the deletion can be taken back.
    Result<void> deleteVideo(const FilesFile& file);
    // The entry whose deletion is taken back next: the one deleted last. Null if there is none.
    const DeletedVideos::Entry* lastDeleted() const;
    // Puts the entry deleted last back at its place, with all that was deleted with it. Returns
    // false if its file is in the list as another entry.
    bool takeBackDeletion();
    MarkCounts countMarks(const std::string& videoId) const;
    void renameVideo(const FilesFile& file, const std::string& name);
    void toggleFavorite(const std::string& videoId);
    // Fails if there is no such file or if it is the video of another entry.
    bool rebindVideo(const std::string& videoId, const std::filesystem::path& file);
    void saveVideosData();
    // Stores when the video was opened as a project. File systems rarely update access times.
    void noteOpening(const std::string& videoId, Date moment);
    std::optional<Date> lastOpening(const std::string& videoId) const;
    void setPreview(const std::string& videoId, std::shared_ptr<const ImageBuffer> preview);

    const VideosData* findById(const std::string& videoId) const;
    // The first entry with exactly these bytes. If several entries have them, the one with the
    // preferred id is returned.
    const VideosData* findByBookmark(const Bytes& bookmark,
                                     const std::string& preferredId = {}) const;
    // The entry whose video is this file, other than the excepted one; null if there is none.
    const VideosData* findByFile(const std::filesystem::path& file,
                                 const std::string& exceptId = {}) const;
    // Absent if the file does not exist or another file is at its place.
    std::optional<std::filesystem::path> resolveVideoURL(const Bytes& bookmark) const;
    std::string displayName(const FilesFile& file) const;
    // The name in words. Names made from a match without teams and score are replaced by the name
    // of the file.
    MatchTitle title(const FilesFile& file) const;

  private:
    bool loadVideosData();  // returns false if the stored list cannot be read
    void storeList();
    void renewBookmarks(std::vector<VideosData>& list) const;
    void migrate(const std::vector<VideosDataOldFormat>& old);
    std::vector<VideosData> withoutDuplicates(const std::vector<VideosData>& list) const;
    void rebuildFiles();
    const VideosData* entryOfFile(const VideosData& video) const;  // another one of the same file
    std::vector<VideosData> cleaned(const std::vector<VideosData>& list);
    Result<void> keepTimeline(const VideosData& video);
    void publish();
    // Edits the matching entries of both lists, saves and publishes. Returns false if there are
    // none.
    template <class Matches, class Change>
    bool change(const Matches& matches, const Change& edit);
    template <class Matches>
    std::optional<FilesFile> fileWith(const Matches& matches) const;

    InMemoryStorageManager& storage_;
    Bookmarks& bookmarks_;
    Directories directories_;
    const Texts& texts_;
    Log& log_;
    DeletedTimelineKeeper* keeper_ = nullptr;
    std::vector<FilesFile> files_;
    std::vector<VideosData> videosData_;
    DeletedVideos deleted_;
    std::function<void(const std::vector<FilesFile>&)> updateFiles_;
    std::function<void()> listStored_;
};

}  // namespace tembrix
