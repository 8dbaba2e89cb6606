#include "app/shell/window_factory.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <optional>
#include <utility>

#include "app/widgets/sheet.h"

namespace tembrix {

namespace {

// The window decoration to expect for a window that is not shown yet: that of any visible window.
QMargins usualDecoration() {
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowType() == Qt::Window && window->windowHandle() &&
            !window->windowFlags().testFlag(Qt::FramelessWindowHint))
            return window->windowHandle()->frameMargins();
    }
    return {};
}

// What the hot keys of a window can do while this sheet or panel over it has the focus.
KeyState keysUnder(const QWidget& window) {
    const auto* sheet = qobject_cast<const Sheet*>(&window);
    switch (sheet ? sheet->hotkeys() : Sheet::Hotkeys::none) {
        case Sheet::Hotkeys::ofWindow:
            return KeyState::window;
        case Sheet::Hotkeys::ofLabels:
            return KeyState::labelSheet;
        case Sheet::Hotkeys::none:
            break;
    }
    return KeyState::sheet;
}

}  // namespace

// A top-level window. It notifies the orchestration through its callbacks only.
class QtWindowFactory::Shell final : public QWidget {
  public:
    explicit Shell(Callbacks callbacks) : callbacks_(std::move(callbacks)) {}

    void detach() { callbacks_ = {}; }

    // Destroys the content and its sheets. They use the project, which may be destroyed right after
    // this window is closed. The empty window itself is deleted later.
    void clear() {
        const auto children = findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            delete *child;
    }

    void keyChanged(KeyState state) {
        if (const auto call = callbacks_.keyChanged)
            call(state);
    }

    // Places the window including its decoration. The size of the decoration is known only some
    // time after the window is shown; until then the contents are resized whenever it changes.
    void place(const QRect& frame) {
        frame_ = frame;
        fitted_.reset();
        fit(isVisible() ? windowHandle()->frameMargins() : usualDecoration());
    }

  protected:
    void showEvent(QShowEvent* event) override {
        QWidget::showEvent(event);
        windowHandle()->installEventFilter(this);
        QTimer::singleShot(settlingTime, this, [this] { frame_.reset(); });
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Expose || event->type() == QEvent::Move ||
            event->type() == QEvent::Resize)
            QTimer::singleShot(0, this, [this] {
                if (isVisible())
                    fit(windowHandle()->frameMargins());
            });
        return false;
    }
    void closeEvent(QCloseEvent* event) override {
        if (callbacks_.shouldClose && !callbacks_.shouldClose()) {
            event->ignore();
            return;
        }
        event->accept();
        // The callback destroys the window's handle, whose destructor closes this window again, so
        // it is called only once.
        if (const auto call = std::exchange(callbacks_, {}).willClose)
            call();
    }

  private:
    static constexpr int settlingTime = 2000;  // milliseconds after the window is shown

    void fit(const QMargins& decoration) {
        if (!frame_ || fitted_ == decoration)
            return;
        fitted_ = decoration;
        setGeometry(frame_->marginsRemoved(decoration));
    }

    Callbacks callbacks_;
    std::optional<QRect> frame_;      // the area to fill, including the decoration
    std::optional<QMargins> fitted_;  // the decoration for which the contents were last resized
};

class QtWindowFactory::Handle final : public ProjectWindow {
  public:
    explicit Handle(Shell* shell) : shell_(shell) {}

    // The window may be processing its close event, so it is deleted from the event loop.
    ~Handle() override {
        if (!shell_)
            return;
        shell_->detach();
        shell_->close();
        shell_->clear();
        shell_->deleteLater();
    }

    void setFrame(const Rect& frame) override {
        shell_->place(QRect(QPoint(qRound(frame.x), qRound(frame.y)),
                            QPoint(qRound(frame.right()) - 1, qRound(frame.bottom()) - 1)));
    }

    void show() override {
        shell_->show();
        comeForward(shell_);
        // The second press of a double click in the list would raise the list over the window that
        // the first press opened.
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

    QPointer<Shell> shell_;
};

QtWindowFactory::QtWindowFactory() {
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &QtWindowFactory::followKeyboard);
}

std::unique_ptr<ProjectWindow> QtWindowFactory::make(const WindowRow& row, const std::string& title,
                                                     Callbacks callbacks) {
    auto* shell = new Shell(std::move(callbacks));
    shell->setObjectName(QString::fromLatin1(row.titleKey));
    shell->setWindowTitle(QString::fromStdString(title));
    shell->setAccessibleName(shell->windowTitle());
    auto* layout = new QVBoxLayout(shell);
    layout->setContentsMargins(0, 0, 0, 0);
    if (frame_.menuBar)
        layout->setMenuBar(frame_.menuBar(shell));
    if (frame_.banner)
        layout->addWidget(frame_.banner(shell));
    layout->addWidget(makers_.at(row.kind)(shell), 1);
    std::erase_if(shells_, [](const QPointer<Shell>& open) { return open.isNull(); });
    shells_.emplace_back(shell);
    return std::make_unique<Handle>(shell);
}

std::vector<QWidget*> QtWindowFactory::windows() const {
    std::vector<QWidget*> open;
    for (const auto& shell : shells_)
        if (shell && shell->isVisible())
            open.push_back(shell);
    return open;
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
                state = std::max(state, keysUnder(*widget->window()));
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
