#include "core/shell/windows_manager.h"

#include <utility>

#include "core/notifications/events.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace {
constexpr double controlShare = 0.4;
constexpr double topMargin = 40;
}  // namespace

ProjectFrames projectFrames(const Rect& screen) {
    const double controlHeight = controlShare * screen.height;
    const double upperHeight = screen.height - controlHeight - topMargin;
    const double upperTop = screen.y + topMargin;
    const double third = screen.width / 3;
    return {
        .control = {screen.x, screen.bottom() - controlHeight, screen.width, controlHeight},
        .tagLibrary = {screen.x, upperTop, third, upperHeight},
        .video = {screen.x + third, upperTop, 2 * third, upperHeight},
    };
}

WindowsManager::WindowsManager(VideoFilesManager& library, InMemoryStorageManager& storage,
                               TimelineDataManager& timeline, VideoPlayerManager& player,
                               HotKeyManager& hotkeys, TagLibraryManager& tagLibrary,
                               WindowFactory& windows, EventBus& events, const Texts& texts)
    : library_(library),
      storage_(storage),
      timeline_(timeline),
      player_(player),
      hotkeys_(hotkeys),
      tagLibrary_(tagLibrary),
      windows_(windows),
      events_(events),
      texts_(texts) {
    hotkeys_.setKeyWindows(this);
}

WindowsManager::~WindowsManager() {
    hotkeys_.setKeyWindows(nullptr);
}

void WindowsManager::openProject(const std::string& videoId) {
    currentVideoId_ = videoId;
    const VideosData* video = library_.findById(videoId);
    if (!video)
        return;
    const auto file = library_.resolveVideoURL(video->bookmark);
    if (!file || !isClosing_)
        return;

    TimelineLines loaded = storage_.loadTimeline(videoId);
    storage_.userDefaults().setText(layout::editingLineKey, "");
    storage_.userDefaults().setText(layout::editingStampKey, "");
    isClosing_ = false;
    openVideoId_ = videoId;
    timeline_.openTimeline(video->bookmark, std::move(loaded), videoId);
    player_.open(*file);
    // The keys of the last project went with it; the active collection is still the same.
    tagLibrary_.rebuildHotkeys();
    hotkeys_.startMonitoring();

    videoWindow_ = makeWindow(WindowKind::video, "video");
    controlWindow_ = makeWindow(WindowKind::control, "timelines");
    tagLibraryWindow_ = makeWindow(WindowKind::tagLibrary, "tagLibrary");
    if (const auto screen = windows_.mainScreenFrame()) {
        const ProjectFrames frames = projectFrames(*screen);
        controlWindow_->setFrame(frames.control);
        tagLibraryWindow_->setFrame(frames.tagLibrary);
        videoWindow_->setFrame(frames.video);
    }
    videoWindow_->show();
    controlWindow_->show();
    tagLibraryWindow_->show();
}

std::unique_ptr<ProjectWindow> WindowsManager::makeWindow(WindowKind kind, const char* titleKey) {
    WindowFactory::Callbacks callbacks;
    callbacks.shouldClose = [this, kind] {
        return kind != WindowKind::video || videoWindowShouldClose();
    };
    callbacks.willClose = [this, kind] { windowWillClose(kind); };
    callbacks.keyChanged = [this, kind](KeyState state) { keyChanged(kind, state); };
    return windows_.make(kind, texts_.text(titleKey), std::move(callbacks));
}

// While the drawing editor is open the close button ends the editor, not the window.
bool WindowsManager::videoWindowShouldClose() {
    if (!player_.isVideoPlayerInEditorMode)
        return true;
    events_.post(events::EditorModeChanged{false});
    return false;
}

void WindowsManager::windowWillClose(WindowKind kind) {
    if (kind == WindowKind::video)
        player_.isVideoPlayerInEditorMode = false;
    closeAll();
}

void WindowsManager::closeAll() {
    for (auto* window : {tagLibraryWindow_.get(), videoWindow_.get(), controlWindow_.get()}) {
        if (window)
            window->detach();
    }
    events_.post(events::StopViewerPlayer{});
    videoWindow_.reset();
    controlWindow_.reset();
    tagLibraryWindow_.reset();
    currentActiveWindow_.reset();
    keyState_ = KeyState::none;
    hotkeys_.clearHotkeys();
    hotkeys_.stopMonitoring();
    player_.cleanup();
    isClosing_ = true;
}

void WindowsManager::libraryChanged() {
    if (isClosing_)
        return;
    if (const VideosData* video = library_.findById(openVideoId_))
        timeline_.currentBookmark = video->bookmark;
    else
        closeAll();
}

// Resigning clears the field whichever window resigned, so the order of the two messages matters
// little: the window that became key tells so again.
void WindowsManager::keyChanged(WindowKind kind, KeyState state) {
    keyState_ = state;
    if (state == KeyState::none)
        currentActiveWindow_.reset();
    else
        currentActiveWindow_ = kind;
}

bool WindowsManager::isControlOrLibraryKey() const {
    return keyState_ == KeyState::window && currentActiveWindow_ &&
           *currentActiveWindow_ != WindowKind::video;
}

// A sheet or a panel has the keyboard for itself, except that labels are picked by their keys.
bool WindowsManager::isProjectWindowActive() const {
    return currentActiveWindow_ && (keyState_ == KeyState::window || *hotkeys_.isLabelHotkeyMode);
}

void WindowsManager::openFieldMapSelection(const Tag&, const Bytes&, std::function<void(Point)>) {}

}  // namespace tembrix
