#include "app/shell/window_factory.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <optional>
#include <utility>

#include "ports/user_defaults.h"

#include "app/shell/joined_windows.h"
#include "app/shell/window_place.h"
#include "app/widgets/sheet.h"

namespace tembrix {

namespace {

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
    Shell(Callbacks callbacks, UserDefaults* defaults, const std::string& name)
        : callbacks_(std::move(callbacks)), place_(*this, defaults, name) {}

    void detach() { callbacks_ = {}; }

    void setTitle(const std::string& title) {
        setWindowTitle(QString::fromStdString(title));
        setAccessibleName(windowTitle());
    }

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

    void beginAt(const QRect& first) { place_.begin(first); }

  protected:
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
    Callbacks callbacks_;
    WindowPlace place_;
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
        if (auto* joined = joinedAround())
            joined->remove(shell_);
        shell_->clear();
        shell_->deleteLater();
    }

    void setTitle(const std::string& title) override { shell_->setTitle(title); }

    void setFirstFrame(const Rect& frame) override {
        const QRect area(QPoint(qRound(frame.x), qRound(frame.y)),
                         QPoint(qRound(frame.right()) - 1, qRound(frame.bottom()) - 1));
        if (auto* joined = joinedAround())
            joined->setFrame(shell_, area);
        else
            shell_->beginAt(area);
    }

    void show() override {
        shell_->show();
        bringForward(*shell_);
        // The second press of a double click in the list would raise the list over the window that
        // the first press opened.
        QTimer::singleShot(QApplication::doubleClickInterval(), shell_, [shell = shell_] {
            for (const QWidget* active = QApplication::activeWindow(); active;
                 active = active->parentWidget())
                if (shellOf(active->window()))
                    return;  // also a sheet that was opened meanwhile
            bringForward(*shell);
        });
    }

    void detach() override { shell_->detach(); }

  private:
    JoinedWindows* joinedAround() const { return qobject_cast<JoinedWindows*>(shell_->window()); }

    QPointer<Shell> shell_;
};

QtWindowFactory::QtWindowFactory(UserDefaults* places)
    : places_(places), joins_(JoinedWindows::areNeeded()) {
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &QtWindowFactory::followKeyboard);
}

std::unique_ptr<ProjectWindow> QtWindowFactory::make(const WindowRow& row, const std::string& title,
                                                     Callbacks callbacks) {
    auto* shell = new Shell(std::move(callbacks), places_, row.titleKey);
    shell->setObjectName(QString::fromLatin1(row.titleKey));
    shell->setTitle(title);
    auto* layout = new QVBoxLayout(shell);
    layout->setContentsMargins(0, 0, 0, 0);
    if (joins_ && row.closesProject)
        joined()->add(shell);
    else
        addFrame(shell, row.commands);
    layout->addWidget(makers_.at(row.kind)(shell), 1);
    std::erase_if(shells_, [](const QPointer<Shell>& open) { return open.isNull(); });
    shells_.emplace_back(shell);
    return std::make_unique<Handle>(shell);
}

void QtWindowFactory::addFrame(QWidget* window, CommandScope commands) {
    auto* layout = static_cast<QVBoxLayout*>(window->layout());
    if (frame_.menuBar)
        layout->setMenuBar(frame_.menuBar(window, commands));
    if (frame_.banner)
        layout->addWidget(frame_.banner(window));
}

JoinedWindows* QtWindowFactory::joined() {
    if (!joined_ || joined_->isClosing()) {
        joined_ = new JoinedWindows;
        joined_->setName(projectName_);
        addFrame(joined_, CommandScope::project);
        connect(joined_, &JoinedWindows::currentChanged, this,
                [this] { followKeyboard(QGuiApplication::focusWindow()); });
    }
    return joined_;
}

void QtWindowFactory::nameProject(const std::string& name) {
    projectName_ = QString::fromStdString(name);
    if (joined_)
        joined_->setName(projectName_);
}

QtWindowFactory::Shell* QtWindowFactory::shellOf(QWidget* window) {
    if (const auto* joined = qobject_cast<JoinedWindows*>(window))
        window = joined->current();
    return dynamic_cast<Shell*>(window);
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
            shell = shellOf(widget->window());
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
