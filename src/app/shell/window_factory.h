#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <map>

#include "base/geometry.h"

#include "core/shell/windows_manager.h"

class QWidget;
class QWindow;

namespace tembrix {

// Makes the top-level windows of a project and follows which of them has the keyboard. What a
// window holds comes from the composition root.
class QtWindowFactory final : public QObject, public WindowFactory {
    Q_OBJECT

  public:
    struct Content {
        QWidget* view;
        std::function<void()> endSubscriptions;  // may be empty
    };
    using MakeContent = std::function<Content(WindowKind kind, QWidget* parent)>;

    // What every window shows above its content; null for nothing.
    using MakeBanner = std::function<QWidget*(QWidget* parent)>;

    explicit QtWindowFactory(MakeContent makeContent, MakeBanner makeBanner = {});

    std::unique_ptr<ProjectWindow> make(WindowKind kind, const std::string& title,
                                        Callbacks callbacks) override;
    std::optional<Rect> mainScreenFrame() const override;

  private:
    class Shell;
    class Handle;
    void followKeyboard(QWindow* focused);

    MakeContent makeContent_;
    MakeBanner makeBanner_;
    QPointer<Shell> keyShell_;
};

}  // namespace tembrix
