#include "app/shell/window_factory.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>
#include <utility>

namespace tembrix {

// One top-level window. Knows the orchestration only through its callbacks.
class QtWindowFactory::Shell final : public QWidget {
  public:
    explicit Shell(Callbacks callbacks) : callbacks_(std::move(callbacks)) {}

    void setEndSubscriptions(std::function<void()> end) { endSubscriptions_ = std::move(end); }

    void detach() {
        callbacks_ = {};
        if (const auto end = std::exchange(endSubscriptions_, {}))
            end();
    }

    void keyChanged(KeyState state) {
        if (const auto call = callbacks_.keyChanged)
            call(state);
    }

  protected:
    void closeEvent(QCloseEvent* event) override {
        if (callbacks_.shouldClose && !callbacks_.shouldClose()) {
            event->ignore();
            return;
        }
        event->accept();
        // The call destroys this window's handle, and so leads back here; it happens once.
        if (const auto call = std::exchange(callbacks_, {}).willClose)
            call();
    }

  private:
    Callbacks callbacks_;
    std::function<void()> endSubscriptions_;
};

class QtWindowFactory::Handle final : public ProjectWindow {
  public:
    explicit Handle(Shell* shell) : shell_(shell) {}

    // The window may be in the middle of its own close event, so it goes with the next turn of the
    // loop.
    ~Handle() override {
        if (!shell_)
            return;
        shell_->detach();
        shell_->close();
        shell_->deleteLater();
    }

    void setFrame(const Rect& frame) override {
        const int x = qRound(frame.x);
        const int y = qRound(frame.y);
        // The frame includes the decoration, whose size is known only once the window is on screen.
        const QMargins margins = decoration();
        shell_->setGeometry(
            QRect(QPoint(x, y), QPoint(qRound(frame.right()) - 1, qRound(frame.bottom()) - 1))
                .marginsRemoved(margins));
    }

    void show() override {
        shell_->show();
        comeForward(shell_);
        // The second press of a double click on the list raises it over what the first one opened.
        QTimer::singleShot(QApplication::doubleClickInterval(), shell_, [shell = shell_] {
            if (!dynamic_cast<Shell*>(QApplication::activeWindow()))
                comeForward(shell);
        });
    }

    void detach() override { shell_->detach(); }

  private:
    static void comeForward(QWidget* window) {
        window->raise();
        window->activateWindow();
    }

    QMargins decoration() const {
        const QWindow* window = shell_->windowHandle();
        const QMargins known = window ? window->frameMargins() : QMargins();
        return known.isNull() ? QMargins(0, titleBarHeight, 0, 0) : known;
    }

    static constexpr int titleBarHeight = 28;
    QPointer<Shell> shell_;
};

QtWindowFactory::QtWindowFactory(MakeContent makeContent) : makeContent_(std::move(makeContent)) {
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &QtWindowFactory::followKeyboard);
}

std::unique_ptr<ProjectWindow> QtWindowFactory::make(WindowKind kind, const std::string& title,
                                                     Callbacks callbacks) {
    static const std::map<WindowKind, const char*> names{{WindowKind::video, "video"},
                                                         {WindowKind::control, "timelines"},
                                                         {WindowKind::tagLibrary, "tagLibrary"}};
    auto* shell = new Shell(std::move(callbacks));
    shell->setObjectName(QString::fromLatin1(names.at(kind)));
    shell->setWindowTitle(QString::fromStdString(title));
    shell->setAccessibleName(shell->windowTitle());
    auto* layout = new QVBoxLayout(shell);
    layout->setContentsMargins(0, 0, 0, 0);
    Content content = makeContent_(kind, shell);
    layout->addWidget(content.view);
    shell->setEndSubscriptions(std::move(content.endSubscriptions));
    return std::make_unique<Handle>(shell);
}

std::optional<Rect> QtWindowFactory::mainScreenFrame() const {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return std::nullopt;
    const QRect frame = screen->geometry();
    return Rect{static_cast<double>(frame.x()), static_cast<double>(frame.y()),
                static_cast<double>(frame.width()), static_cast<double>(frame.height())};
}

void QtWindowFactory::followKeyboard(QWindow* focused) {
    Shell* shell = nullptr;
    KeyState state = KeyState::none;
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (!focused || top->windowHandle() != focused)
            continue;
        state = KeyState::window;
        for (QWidget* widget = top; widget && !shell; widget = widget->parentWidget()) {
            shell = dynamic_cast<Shell*>(widget->window());
            if (!shell)
                state = KeyState::sheet;
        }
        break;
    }
    if (keyShell_ && keyShell_ != shell)
        keyShell_->keyChanged(KeyState::none);
    keyShell_ = shell;
    if (shell)
        shell->keyChanged(state);
}

}  // namespace tembrix
