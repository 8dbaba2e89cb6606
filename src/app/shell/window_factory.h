#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "base/geometry.h"

#include "core/commands/command_table.h"
#include "core/shell/window_table.h"
#include "core/shell/windows_manager.h"

class QWidget;
class QWindow;

namespace tembrix {

class JoinedWindows;
class UserDefaults;

// Creates top-level windows and tracks which of them has the keyboard focus.
class QtWindowFactory final : public QObject, public WindowFactory {
    Q_OBJECT

  public:
    using Maker = std::function<QWidget*(QWidget* parent)>;
    using Makers = std::map<WindowKind, Maker>;

    // Windows open where they were closed, if there are defaults to remember that.
    explicit QtWindowFactory(UserDefaults* places = nullptr);

    // What every window shows above its content, each optional.
    struct Frame {
        std::function<QWidget*(QWidget* parent, CommandScope commands)> menuBar = {};
        Maker banner = {};
    };
    // Called once, before the first window is created.
    void setMakers(Makers makers, Frame frame) {
        makers_ = std::move(makers);
        frame_ = std::move(frame);
    }

    // Whether the windows of a project are panes of one window. Called before a project is opened.
    void setJoined(bool joined) { joins_ = joined; }

    // The open windows, in the order in which they were opened.
    std::vector<QWidget*> windows() const;

    std::unique_ptr<ProjectWindow> make(const WindowRow& row, const std::string& title,
                                        Callbacks callbacks) override;
    void nameProject(const std::string& name) override;
    std::optional<Rect> mainScreenFrame() const override;

  private:
    class Shell;
    class Handle;
    void followKeyboard(QWindow* focused);
    void addFrame(QWidget* window, CommandScope commands);
    JoinedWindows* joined();
    static Shell* shellOf(QWidget* window);

    UserDefaults* places_;
    Makers makers_;
    Frame frame_;
    std::vector<QPointer<Shell>> shells_;
    QPointer<Shell> keyShell_;
    bool joins_;
    QPointer<JoinedWindows> joined_;
    QString projectName_;  // the title of joined windows
};

}  // namespace tembrix
