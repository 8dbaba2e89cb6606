#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <map>
#include <utility>
#include <vector>

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

    // What every window shows above its content, each optional.
    struct Frame {
        Maker menuBar = {};
        Maker banner = {};
    };
    // Called once, before the first window is created.
    void setMakers(Makers makers, Frame frame) {
        makers_ = std::move(makers);
        frame_ = std::move(frame);
    }

    // The open windows, in the order in which they were opened.
    std::vector<QWidget*> windows() const;

    std::unique_ptr<ProjectWindow> make(const WindowRow& row, const std::string& title,
                                        Callbacks callbacks) override;
    std::optional<Rect> mainScreenFrame() const override;

  private:
    class Shell;
    class Handle;
    void followKeyboard(QWindow* focused);

    Makers makers_;
    Frame frame_;
    std::vector<QPointer<Shell>> shells_;
    QPointer<Shell> keyShell_;
};

}  // namespace tembrix
