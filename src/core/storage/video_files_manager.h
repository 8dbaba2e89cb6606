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

#include "ports/bookmarks.h"
#include "ports/directories.h"
#include "ports/texts.h"
#include "ports/user_defaults.h"

#include "core/records/video_records.h"
#include "core/storage/deleted_timeline_keeper.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

// The library: the list of videos that the user added, its storage, migration and clean-ups. A
// video is never copied; the id of its entry is the key of everything that belongs to it. Main
// thread only.
class VideoFilesManager {
  public:
    VideoFilesManager(InMemoryStorageManager& storage, Bookmarks& bookmarks,
                      Directories directories, const Texts& texts, Log& log);

    // Makes the folders and loads the list. Called once, before anything else.
    void start();
    void setDeletedTimelineKeeper(DeletedTimelineKeeper* keeper) { keeper_ = keeper; }

    const std::vector<FilesFile>& files() const { return files_; }
    const std::vector<VideosData>& videosData() const { return videosData_; }
    // Called with the list after every change.
    void setUpdateFiles(std::function<void(const std::vector<FilesFile>&)> callback);

    // Called after the list was stored.
    void setListStored(std::function<void()> stored) { listStored_ = std::move(stored); }

    std::optional<FilesFile> addVideo(const std::filesystem::path& file);
    std::optional<FilesFile> addVideoNamed(const std::filesystem::path& file,
                                           const std::string& name);
    void appendFile(const FilesFile& file);
    std::vector<FilesFile> reloadFiles();
    void deleteVideo(const FilesFile& file);
    void renameVideo(const FilesFile& file, const std::string& name);
    void toggleFavorite(const std::string& videoId);
    bool rebindVideo(const std::string& videoId, const std::filesystem::path& file);
    void saveVideosData();
    // When the video was opened as a project. File systems move the access time rarely, if at all.
    void noteOpening(const std::string& videoId, Date moment);
    std::optional<Date> lastOpening(const std::string& videoId) const;
    void setPreview(const std::string& videoId, std::shared_ptr<const ImageBuffer> preview);

    const VideosData* findById(const std::string& videoId) const;
    // The first entry with exactly these bytes. If several entries have them, the one with the
    // preferred id is found.
    const VideosData* findByBookmark(const Bytes& bookmark,
                                     const std::string& preferredId = {}) const;
    // Absent if the file is not there, or if only its name is there and the file of that name is
    // the video of another entry.
    std::optional<std::filesystem::path> resolveVideoURL(const Bytes& bookmark) const;
    std::string displayName(const FilesFile& file) const;

  private:
    bool loadVideosData();  // false if there is a list that cannot be read
    void migrate(const std::vector<VideosDataOldFormat>& old);
    std::vector<VideosData> withoutDuplicates(const std::vector<VideosData>& list) const;
    void rebuildFiles();
    bool belongsToAnotherEntry(const std::filesystem::path& file, const Bytes& bookmark) const;
    // Leaves rescue records of the entries that `before` has and the list does not have any more.
    void keepTimelinesOfDropped(const std::vector<VideosData>& before);
    void keepTimeline(const VideosData& video);
    void publish();
    // Edits the matching entries of both lists, saves and publishes; false if there are none.
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
    std::function<void(const std::vector<FilesFile>&)> updateFiles_;
    std::function<void()> listStored_;
};

}  // namespace tembrix
