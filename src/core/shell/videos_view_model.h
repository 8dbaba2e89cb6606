#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/date.h"
#include "base/published.h"
#include "base/signal.h"

#include "ports/bookmarks.h"
#include "ports/panels.h"
#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/background/background_work.h"
#include "core/background/lifetime.h"
#include "core/records/video_records.h"
#include "core/shell/found_videos.h"
#include "core/shell/windows_manager.h"
#include "core/storage/video_files_manager.h"
#include "core/storage/videos_preview_manager.h"

namespace tembrix {

enum class VideoFilter { all, recent, favorites };

struct DeletedMatch {
    std::string id;
    std::string title;
    bool operator==(const DeletedMatch&) const = default;
};

// The state that the list window shows; changed by the view model only.
struct VideosState {
    std::vector<FilesFile> files;
    bool showError = false;
    std::string errorTitle;
    std::string errorDetails;  // shown below the title
    bool showMetadataSheet = false;
    VideoMetadata videoMetadata;
    std::size_t waitingVideos = 0;        // that are added after the one on the sheet
    std::optional<DeletedMatch> deleted;  // the match whose deletion can be taken back
    bool showRenameSheet = false;
    std::optional<FilesFile> fileToRename;
    std::string newFileName;
    bool showRebindAlert = false;
    std::optional<FilesFile> fileToRebind;
};

namespace videos {
struct OpenVideo {
    std::string id;
};
struct DeleteFile {
    FilesFile file;
};
struct TakeBackDeletion {};
struct AddFiles {  // videos, and folders with videos in them
    std::vector<std::filesystem::path> paths;
};
struct ShowError {
    std::string title;
};
struct SaveVideoMetadata {
    std::optional<std::filesystem::path> url;
    std::string team1;
    std::string team2;
    std::string score;
    Date date;
    bool underFileName = false;  // not under the name of the match
};
struct CancelMetadata {};    // leaves out this video; the next one follows
struct AddWaitingVideos {};  // adds this one and all that wait under the names of their files
struct ShowRenameSheet {
    FilesFile file;
};
struct RenameVideo {
    FilesFile file;
    std::string team1;
    std::string team2;
    std::string score;
};
struct RenameSimpleVideo {
    FilesFile file;
    std::string name;
};
struct CancelRename {};
struct ToggleFavorite {
    FilesFile file;
};
struct ShowRebindAlert {
    FilesFile file;
};
struct PickRebindFile {};  // the alert's button "select new video"
struct CancelRebind {};
struct RebindVideo {
    FilesFile file;
    std::filesystem::path url;
};
struct DismissError {};
struct OpenFiles {};
struct OpenGuide {};
struct RefreshFiles {};
}  // namespace videos

using VideosAction =
    std::variant<videos::OpenVideo, videos::DeleteFile, videos::TakeBackDeletion, videos::AddFiles,
                 videos::AddWaitingVideos, videos::ShowError, videos::SaveVideoMetadata,
                 videos::CancelMetadata, videos::ShowRenameSheet, videos::RenameVideo,
                 videos::RenameSimpleVideo, videos::CancelRename, videos::ToggleFavorite,
                 videos::ShowRebindAlert, videos::PickRebindFile, videos::CancelRebind,
                 videos::RebindVideo, videos::DismissError, videos::OpenFiles, videos::OpenGuide,
                 videos::RefreshFiles>;

// The view model of the list window: one state, changed by actions. Main thread only.
class VideosViewModel {
  public:
    VideosViewModel(VideoFilesManager& files, VideosPreviewManager& previews,
                    WindowsManager& windows, Panels& panels, Scheduler& scheduler,
                    const Texts& texts, const Locale& locale,
                    std::function<std::filesystem::path()> guide);
    ~VideosViewModel();

    // Projects are opened and the list is changed by this function, which runs a task once the
    // launch work has ended, because that may replace what the task reads or writes. Without it,
    // tasks run immediately.
    void setWhenReady(std::function<void(std::function<void()>)> whenReady) {
        whenReady_ = std::move(whenReady);
    }

    Published<VideosState, VideosViewModel> state;
    void send(VideosAction action);
    // Asks the list to select an entry, because it was added, or is the one that the user meant.
    Signal<std::string> goToVideo;

    // The videos whose display name contains the search text and that match the filter. The filter
    // `recent` sorts them by last access.
    std::vector<FilesFile> filteredFiles(const std::string& searchText, VideoFilter filter) const;
    // When the video was last opened here or its file last read; the current time if that is
    // unknown.
    Date lastAccess(const FilesFile& file) const;
    std::string displayName(const FilesFile& file) const;
    MatchTitle title(const FilesFile& file) const { return files_.title(file); }
    MarkCounts countMarks(const FilesFile& file) const {
        return files_.countMarks(file.videoData.id);
    }
    std::optional<std::filesystem::path> videoPath(
        const FilesFile& file) const;  // absent: unavailable
    std::filesystem::path previewFile(const std::filesystem::path& video) const;

  private:
    void openVideo(const std::string& videoId);
    void openProject(const std::string& videoId);
    template <class Task>
    void whenReady(Task task);
    void deleteVideo(const FilesFile& file);
    void rename(const FilesFile& file, const std::string& name);
    void takeBackDeletion();
    void showError(const std::string& title, const std::string& details = {});
    void listChanged();
    void showRebindAlert(const FilesFile& file);
    void pickVideo();
    void addFiles(const std::vector<std::filesystem::path>& paths);
    void videosFound(const FoundVideos& found);
    void nextVideo();
    bool isToBeAdded(const std::filesystem::path& file) const;
    void saveMatch(const videos::SaveVideoMetadata& action);
    void addWaitingVideos();
    // Under the name of its file if no other is given. Returns false if the file cannot be added.
    bool add(const std::filesystem::path& file,
             const std::optional<videos::SaveVideoMetadata>& named);
    void pickRebindFile();
    void makePreview(const std::string& videoId);
    void rebind(const FilesFile& file, const std::filesystem::path& url);
    void openGuide();
    std::string videoName(const VideoMetadata& match) const;

    VideoFilesManager& files_;
    VideosPreviewManager& previews_;
    WindowsManager& windows_;
    Panels& panels_;
    Scheduler& scheduler_;
    const Texts& texts_;
    const Locale& locale_;
    std::deque<std::filesystem::path> waiting_;     // videos to be added, one sheet after the other
    std::function<std::filesystem::path()> guide_;  // makes the page of the user's guide
    std::function<void(std::function<void()>)> whenReady_;
    Lifetime lifetime_;
    BackgroundWork looking_;  // into folders
};

}  // namespace tembrix
