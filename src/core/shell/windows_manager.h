#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/geometry.h"
#include "base/signal.h"

#include "core/background/lifetime.h"
#include "core/keyboard/key_windows.h"
#include "core/marking/field_map_question.h"
#include "core/records/annotation_records.h"
#include "core/shell/project.h"
#include "core/shell/window_table.h"

namespace tembrix {

// Whether a window has the keyboard focus: itself, in a sheet whose labels have hot keys, or in
// another sheet or panel over it, which keeps its keys. The later ones need more keys for
// themselves.
enum class KeyState { none, window, labelSheet, sheet };

// Controls one open window. Destroying it closes the window without asking and destroys its
// content.
class ProjectWindow {
  public:
    virtual ~ProjectWindow() = default;
    virtual void setTitle(const std::string& title) = 0;
    // Before show(): the frame of a first opening, in screen points with the origin at the top
    // left. A window that remembers another frame uses that.
    virtual void setFirstFrame(const Rect& frame) = 0;
    virtual void show() = 0;    // also brings it to the front
    virtual void detach() = 0;  // none of its callbacks is called afterwards
};

// Creates windows. A window's callbacks are not called after it was destroyed.
class WindowFactory {
  public:
    struct Callbacks {
        std::function<bool()> shouldClose;  // returns false to keep the window open
        std::function<void()> willClose;
        std::function<void(KeyState)> keyChanged;
    };
    virtual ~WindowFactory() = default;
    virtual std::unique_ptr<ProjectWindow> make(const WindowRow& row, const std::string& title,
                                                Callbacks callbacks) = 0;
    // Names what all windows of the project share, for a display that joins them.
    virtual void nameProject(const std::string&) {}
    // The frame of the main screen; absent without a screen.
    virtual std::optional<Rect> mainScreenFrame() const = 0;
};

// Opens and closes the project, manages its windows and tracks which of them has the focus. Only
// one project is open at a time. Main thread only.
class WindowsManager final : public KeyWindows, public FieldMapQuestion {
  public:
    WindowsManager(const ProjectServices& services, WindowFactory& factory);
    ~WindowsManager() override;

    void openProject(const std::string& videoId);
    // Opens a window that belongs to no project, or brings it to the front.
    void open(WindowKind kind);
    void closeAll();
    // Closes the project and all other windows, at the end of the program.
    void closeEverything();
    // Titles the windows in the present language. Those of the project name the match.
    void retitle();
    // Closes the project as the close button of its video window does: an open drawing editor is
    // closed first and alone.
    void closeByCommand();
    // Handles a change of the list of videos. The timelines of the open project are stored under
    // the id of its entry, so the project is closed if the entry was removed, and opened again on
    // the new file if the entry was bound to another one.
    void libraryChanged();

    Project* project() const { return project_.get(); }  // null if none is open
    bool isClosing() const { return !project_; }         // true if no project is open
    const std::string& currentVideoId() const { return currentVideoId_; }

    bool isControlOrLibraryKey() const override;
    bool isProjectWindowActive() const override;
    bool isViewerActive() const override { return false; }

    // The map window does not exist yet, so stamps are made without a position.
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
    std::string titleOf(const WindowRow& row) const;
    std::string matchName() const;
    bool mayClose(const WindowRow& row);
    void windowWillClose(int id);
    void keyChanged(int id, KeyState state);
    void closeWindows(const std::function<bool(const OpenWindow&)>& which);
    const WindowRow* activeRow() const;  // the row of the window with the focus

    const ProjectServices services_;
    WindowFactory& factory_;
    std::string currentVideoId_;  // may also be a video that could not be opened
    std::unique_ptr<Project> project_;
    std::vector<OpenWindow> windows_;
    int lastId_ = 0;
    std::optional<int> activeWindow_;
    KeyState keyState_ = KeyState::none;
    Subscription settingsCommand_;
    Subscription closeCommand_;
    Lifetime lifetime_;
};

}  // namespace tembrix
