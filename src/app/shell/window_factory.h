#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <map>
#include <utility>

#include "base/geometry.h"

#include "core/shell/window_table.h"
#include "core/shell/windows_manager.h"

class QWidget;
class QWindow;

namespace tembrix {

// Creates top-level windows and tracks which of them has the keyboard focus.
class QtWindowFactory final : public QObject, public WindowFactory {
    Q_OBJECT

  public:
    using Maker = std::function<QWidget*(QWidget* parent)>;
    using Makers = std::map<WindowKind, Maker>;

    QtWindowFactory();

    // Sets the makers of the window contents and of the optional banner that every window shows
    // above its content. Called once, before the first window is created.
    void setMakers(Makers makers, Maker banner = {}) {
        makers_ = std::move(makers);
        banner_ = std::move(banner);
    }

    std::unique_ptr<ProjectWindow> make(const WindowRow& row, const std::string& title,
                                        Callbacks callbacks) override;
    std::optional<Rect> mainScreenFrame() const override;

  private:
    class Shell;
    class Handle;
    void followKeyboard(QWindow* focused);

    Makers makers_;
    Maker banner_;
    QPointer<Shell> keyShell_;
};

}  // namespace tembrix
