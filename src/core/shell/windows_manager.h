#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/geometry.h"

#include "ports/texts.h"

#include "core/collections/tag_library_manager.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/key_windows.h"
#include "core/marking/field_map_question.h"
#include "core/marking/marking_flow.h"
#include "core/notifications/event_bus.h"
#include "core/playback/video_player_manager.h"
#include "core/records/annotation_records.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

enum class WindowKind { video, control, tagLibrary };

// Whether a window has the keyboard, itself or through a sheet on it.
enum class KeyState { none, window, sheet };

// One window of an open project as the orchestration sees it. Destroying it closes it without
// asking.
class ProjectWindow {
  public:
    virtual ~ProjectWindow() = default;
    virtual void setFrame(const Rect& frame) = 0;  // screen points, origin top left
    virtual void show() = 0;
    // Ends its content's subscriptions and its callbacks, so that closing it tells nobody.
    virtual void detach() = 0;
};

// Makes real windows. Callbacks of a window never come after it was destroyed.
class WindowFactory {
  public:
    struct Callbacks {
        std::function<bool()> shouldClose;  // false refuses
        std::function<void()> willClose;
        std::function<void(KeyState)> keyChanged;
    };
    virtual ~WindowFactory() = default;
    virtual std::unique_ptr<ProjectWindow> make(WindowKind kind, const std::string& title,
                                                Callbacks callbacks) = 0;
    // The frame of the main screen; absent without one.
    virtual std::optional<Rect> mainScreenFrame() const = 0;
};

// Where the three windows of a project stand: the control window over the lower 40 percent, above
// it the tag panel on the left third and the video on the right two thirds, 40 points left free at
// the top.
struct ProjectFrames {
    Rect control;
    Rect tagLibrary;
    Rect video;
};
ProjectFrames projectFrames(const Rect& screen);

// Opens, tracks and closes the windows of a project and knows which video is open; one project at a
// time. Main thread only.
class WindowsManager final : public KeyWindows, public FieldMapQuestion {
  public:
    WindowsManager(VideoFilesManager& library, InMemoryStorageManager& storage,
                   TimelineDataManager& timeline, VideoPlayerManager& player,
                   HotKeyManager& hotkeys, TagLibraryManager& tagLibrary, WindowFactory& windows,
                   EventBus& events, const Texts& texts);
    ~WindowsManager() override;

    void openProject(const std::string& videoId);
    void closeAll();
    // The list of videos changed. The open project's marks are stored under its video's entry: they
    // follow an entry that was bound to another file, and without an entry the project closes.
    void libraryChanged();
    bool isClosing() const { return isClosing_; }  // true: no project is open
    const std::string& currentVideoId() const { return currentVideoId_; }

    bool isControlOrLibraryKey() const override;
    bool isProjectWindowActive() const override;
    bool isViewerActive() const override { return false; }

    // There is no map window yet, so that marking goes on without a place.
    bool canAsk() const override { return false; }
    void openFieldMapSelection(const Tag& tag, const Bytes& imageBookmark,
                               std::function<void(Point)> chosen) override;

  private:
    std::unique_ptr<ProjectWindow> makeWindow(WindowKind kind, const char* titleKey);
    bool videoWindowShouldClose();
    void keyChanged(WindowKind kind, KeyState state);
    void windowWillClose(WindowKind kind);

    VideoFilesManager& library_;
    InMemoryStorageManager& storage_;
    TimelineDataManager& timeline_;
    VideoPlayerManager& player_;
    HotKeyManager& hotkeys_;
    TagLibraryManager& tagLibrary_;
    WindowFactory& windows_;
    EventBus& events_;
    const Texts& texts_;
    std::string currentVideoId_;
    std::string openVideoId_;  // the current one may be another, which was refused
    bool isClosing_ = true;
    std::optional<WindowKind> currentActiveWindow_;
    KeyState keyState_ = KeyState::none;
    std::unique_ptr<ProjectWindow> videoWindow_;
    std::unique_ptr<ProjectWindow> controlWindow_;
    std::unique_ptr<ProjectWindow> tagLibraryWindow_;
};

}  // namespace tembrix
