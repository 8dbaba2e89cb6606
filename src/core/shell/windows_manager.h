#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/geometry.h"

#include "core/keyboard/key_windows.h"
#include "core/marking/field_map_question.h"
#include "core/records/annotation_records.h"
#include "core/shell/project.h"
#include "core/shell/window_table.h"

namespace tembrix {

// Whether a window has the keyboard, itself or through a sheet on it.
enum class KeyState { none, window, sheet };

// One open window as the orchestration sees it. Destroying it closes the window without asking and
// destroys its content.
class ProjectWindow {
  public:
    virtual ~ProjectWindow() = default;
    virtual void setFrame(const Rect& frame) = 0;  // screen points, origin top left
    virtual void show() = 0;                       // also brings it to the front
    virtual void detach() = 0;                     // from here on none of its callbacks is called
};

// Makes real windows. Callbacks of a window are not called after it was destroyed.
class WindowFactory {
  public:
    struct Callbacks {
        std::function<bool()> shouldClose;  // false refuses
        std::function<void()> willClose;
        std::function<void(KeyState)> keyChanged;
    };
    virtual ~WindowFactory() = default;
    virtual std::unique_ptr<ProjectWindow> make(const WindowRow& row, const std::string& title,
                                                Callbacks callbacks) = 0;
    // The frame of the main screen; absent without one.
    virtual std::optional<Rect> mainScreenFrame() const = 0;
};

// Opens and closes the project, tracks its windows, and knows which of them has the keyboard. One
// project at a time. Main thread only.
class WindowsManager final : public KeyWindows, public FieldMapQuestion {
  public:
    WindowsManager(const ProjectServices& services, WindowFactory& factory);
    ~WindowsManager() override;

    void openProject(const std::string& videoId);
    void closeAll();
    // The list of videos changed. The marks of the open project are stored under the entry of its
    // video: they follow an entry that was bound to another file, and without an entry the project
    // closes.
    void libraryChanged();

    Project* project() const { return project_.get(); }  // null while none is open
    bool isClosing() const { return !project_; }         // true: no project is open
    const std::string& currentVideoId() const { return currentVideoId_; }

    bool isControlOrLibraryKey() const override;
    bool isProjectWindowActive() const override;
    bool isViewerActive() const override { return false; }

    // There is no map window yet: marking continues without a place.
    bool canAsk() const override { return false; }
    void openFieldMapSelection(const Tag& tag, const Bytes& imageBookmark,
                               std::function<void(Point)> chosen) override;

  private:
    struct OpenWindow {
        int id;
        const WindowRow* row;
        std::unique_ptr<ProjectWindow> window;
    };

    void openWindow(const WindowRow& row);
    bool mayClose(const WindowRow& row);
    void windowWillClose(int id);
    void keyChanged(int id, KeyState state);
    void closeWindows(const std::function<bool(const OpenWindow&)>& which);
    const WindowRow* activeRow() const;  // of the window that has the keyboard

    const ProjectServices services_;
    WindowFactory& factory_;
    std::string currentVideoId_;  // may be of a video whose opening was refused
    std::unique_ptr<Project> project_;
    std::vector<OpenWindow> windows_;
    int lastId_ = 0;
    std::optional<int> activeWindow_;
    KeyState keyState_ = KeyState::none;
};

}  // namespace tembrix
