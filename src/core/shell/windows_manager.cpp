#include "core/shell/windows_manager.h"

#include <algorithm>
#include <utility>

#include "base/shortened.h"

#include "core/commands/command_table.h"
#include "core/notifications/events.h"
#include "core/records/video_records.h"

namespace tembrix {

WindowsManager::WindowsManager(const ProjectServices& services, WindowFactory& factory)
    : services_(services), factory_(factory) {
    settingsCommand_ = services_.commands.bind(Command::settings,
                                               {[this] { open(WindowKind::settings); }, {}, {}});
}

WindowsManager::~WindowsManager() {
    closeEverything();
}

void WindowsManager::openProject(const std::string& videoId) {
    currentVideoId_ = videoId;
    const VideosData* video = services_.library.findById(videoId);
    if (!video)
        return;
    const auto file = services_.library.resolveVideoURL(video->bookmark);
    if (!file || project_)
        return;
    project_ = std::make_unique<Project>(services_, *this, *this);
    project_->open(*video, *file);
    // The command may come from a button or a menu of a window that closes with the project.
    closeCommand_ = services_.commands.bind(
        Command::closeProject, {[this] {
            services_.platform.scheduler.onMain(lifetime_.guard([this] { closeByCommand(); }));
        }});
    for (const WindowRow& row : windowTable())
        if (row.opensWithProject)
            openWindow(row);
    for (const OpenWindow& open : windows_)
        if (open.row->opensWithProject)
            open.window->show();
}

void WindowsManager::open(WindowKind kind) {
    const WindowRow& row = windowRow(kind);
    openWindow(row);
    for (const OpenWindow& open : windows_)
        if (open.row == &row)
            open.window->show();
}

std::string WindowsManager::titleOf(const WindowRow& row) const {
    std::string title = services_.platform.texts.text(row.titleKey);
    const VideosData* video = row.belongsToProject && project_
                                  ? services_.library.findById(project_->videoId())
                                  : nullptr;
    if (video)  // a window of the project also says which match is open
        title += " — " + shortened(services_.library.title({*video, nullptr}).name);
    return title;
}

void WindowsManager::retitle() {
    for (const OpenWindow& open : windows_)
        open.window->setTitle(titleOf(*open.row));
}

void WindowsManager::openWindow(const WindowRow& row) {
    const auto known = std::find_if(windows_.begin(), windows_.end(),
                                    [&](const OpenWindow& open) { return open.row == &row; });
    if (row.single && known != windows_.end()) {
        known->window->show();
        return;
    }
    const int id = ++lastId_;
    WindowFactory::Callbacks callbacks;
    callbacks.shouldClose = [this, &row] { return mayClose(row); };
    callbacks.willClose = [this, id] { windowWillClose(id); };
    callbacks.keyChanged = [this, id](KeyState state) { keyChanged(id, state); };
    auto window = factory_.make(row, titleOf(row), std::move(callbacks));
    if (const auto screen = factory_.mainScreenFrame(); screen && row.frame)
        window->setFirstFrame(row.frame(*screen));
    windows_.push_back({id, &row, std::move(window)});
}

// While the drawing editor is open, the close button of the video window closes only the editor.
bool WindowsManager::mayClose(const WindowRow& row) {
    if (row.kind != WindowKind::video || !project_ || !project_->player.isVideoPlayerInEditorMode)
        return true;
    services_.events.post(events::EditorModeChanged{false});
    return false;
}

void WindowsManager::windowWillClose(int id) {
    const auto closed = std::find_if(windows_.begin(), windows_.end(),
                                     [id](const OpenWindow& open) { return open.id == id; });
    if (closed == windows_.end())
        return;
    if (closed->row->closesProject)
        closeAll();
    else
        closeWindows([id](const OpenWindow& open) { return open.id == id; });
}

void WindowsManager::closeByCommand() {
    if (project_ && mayClose(windowRow(WindowKind::video)))
        closeAll();
}

// The windows use the project, so it is destroyed after them.
void WindowsManager::closeAll() {
    const auto closing = std::move(project_);
    if (!closing)
        return;
    closeCommand_.reset();
    closing->marking.disappear();
    services_.events.post(events::StopViewerPlayer{});
    closeWindows([](const OpenWindow& open) { return open.row->belongsToProject; });
}

void WindowsManager::closeEverything() {
    closeAll();
    closeWindows([](const OpenWindow&) { return true; });
}

void WindowsManager::closeWindows(const std::function<bool(const OpenWindow&)>& which) {
    const auto kept = std::stable_partition(windows_.begin(), windows_.end(), std::not_fn(which));
    std::vector<OpenWindow> closing(std::make_move_iterator(kept),
                                    std::make_move_iterator(windows_.end()));
    windows_.erase(kept, windows_.end());
    for (const OpenWindow& open : closing) {
        open.window->detach();
        if (activeWindow_ == open.id) {
            activeWindow_.reset();
            keyState_ = KeyState::none;
        }
    }
}

void WindowsManager::libraryChanged() {
    if (!project_)
        return;
    const std::string id = project_->videoId();
    const VideosData* video = services_.library.findById(id);
    if (!video)
        return closeAll();
    const auto& bookmark = project_->timeline.currentBookmark.get();
    if (bookmark && services_.platform.bookmarks.areOfOneFile(*bookmark, video->bookmark)) {
        project_->timeline.setBookmark(video->bookmark);
        return retitle();
    }
    // The player shows the old file. What is marked on it must not be stored for the new one.
    closeAll();
    services_.platform.scheduler.onMain(lifetime_.guard([this, id] {
        if (!project_)
            openProject(id);
    }));
}

// Any window that loses the focus resets the state. The window that gets the focus reports it
// afterwards.
void WindowsManager::keyChanged(int id, KeyState state) {
    keyState_ = state;
    activeWindow_ = state == KeyState::none ? std::nullopt : std::optional(id);
}

const WindowRow* WindowsManager::activeRow() const {
    const auto active = std::find_if(windows_.begin(), windows_.end(),
                                     [this](const auto& open) { return open.id == activeWindow_; });
    return active == windows_.end() ? nullptr : active->row;
}

bool WindowsManager::isControlOrLibraryKey() const {
    const WindowRow* row = activeRow();
    return row && keyState_ == KeyState::window && row->spaceAlwaysPlays;
}

// Sheets handle their keys themselves. Only the sheet with the labels has hot keys.
bool WindowsManager::isProjectWindowActive() const {
    const WindowRow* row = activeRow();
    return project_ && row && row->takesTagKeys &&
           (keyState_ == KeyState::window ||
            (keyState_ == KeyState::labelSheet && *project_->hotkeys.isLabelHotkeyMode));
}

void WindowsManager::openFieldMapSelection(const Tag&, const Bytes&, std::function<void(Point)>) {}

}  // namespace tembrix
