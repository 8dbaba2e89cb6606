#include "app/shell/window_place.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QStringList>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <array>

#include "ports/user_defaults.h"

#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

constexpr int settlingTime = 2000;  // milliseconds after the window is shown
constexpr int storeDelay = 1000;    // milliseconds after a change
constexpr int leastSize = 100;      // of a remembered frame; smaller ones are damaged

constexpr auto maximizedWord = "maximized";
constexpr auto fullScreenWord = "fullscreen";

// The window decoration to expect for a window that is not shown yet: that of any visible window.
QMargins usualDecoration() {
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowType() == Qt::Window && window->windowHandle() &&
            !window->windowFlags().testFlag(Qt::FramelessWindowHint))
            return window->windowHandle()->frameMargins();
    }
    return {};
}

// The frame moved, and if necessary made smaller, to be whole on the screen that shows most of it.
QRect onPresentScreen(const QRect& frame) {
    const QScreen* best = QGuiApplication::primaryScreen();
    int most = 0;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect common = screen->geometry() & frame;
        const int shown = common.width() * common.height();
        if (shown > most) {
            most = shown;
            best = screen;
        }
    }
    if (!best)
        return frame;
    const QRect screen = best->geometry();
    QRect moved(frame.topLeft(), frame.size().boundedTo(screen.size()));
    moved.moveLeft(std::clamp(moved.left(), screen.left(), screen.right() + 1 - moved.width()));
    moved.moveTop(std::clamp(moved.top(), screen.top(), screen.bottom() + 1 - moved.height()));
    return moved;
}

std::optional<QRect> frameFrom(const QStringList& words) {
    if (words.size() < 4)
        return std::nullopt;
    std::array<int, 4> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        bool isNumber = false;
        numbers[i] = words[static_cast<qsizetype>(i)].toShort(&isNumber);
        if (!isNumber)
            return std::nullopt;
    }
    const auto [x, y, width, height] = numbers;
    return width < leastSize || height < leastSize ? std::nullopt
                                                   : std::optional(QRect(x, y, width, height));
}

}  // namespace

WindowPlace::WindowPlace(QWidget& window, UserDefaults* defaults, const std::string& name)
    : window_(window), defaults_(defaults), key_(layout::windowPlaceKey(name)) {
    settled_.setSingleShot(true);
    settled_.setInterval(settlingTime);
    connect(&settled_, &QTimer::timeout, this, [this] { frame_.reset(); });
    changed_.setSingleShot(true);
    changed_.setInterval(storeDelay);
    connect(&changed_, &QTimer::timeout, this, &WindowPlace::remember);
    window_.installEventFilter(this);
}

void WindowPlace::begin(const std::optional<QRect>& first) {
    first_ = first;
    if (first)
        place(*first);
    restore();
}

// The size of the decoration is known only some time after the window is shown. Until then the
// contents are resized whenever it changes.
void WindowPlace::place(const QRect& frame) {
    frame_ = frame;
    fitted_.reset();
    fit(window_.isVisible() ? window_.windowHandle()->frameMargins() : usualDecoration());
}

void WindowPlace::fit(const QMargins& decoration) {
    if (!frame_ || fitted_ == decoration || window_.isMaximized() || window_.isFullScreen())
        return;
    fitted_ = decoration;
    window_.setGeometry(frame_->marginsRemoved(decoration));
}

void WindowPlace::restore() {
    const auto stored = defaults_ ? defaults_->text(key_) : std::nullopt;
    if (!stored)
        return;
    const QStringList words = QString::fromStdString(*stored).split(' ');
    const auto frame = frameFrom(words);
    if (!frame)
        return;
    place(onPresentScreen(*frame));
    if (words.back() == QLatin1String(maximizedWord))
        window_.setWindowState(window_.windowState() | Qt::WindowMaximized);
    else if (words.back() == QLatin1String(fullScreenWord))
        window_.setWindowState(window_.windowState() | Qt::WindowFullScreen);
}

void WindowPlace::remember() {
    changed_.stop();
    if (!defaults_ || !window_.isVisible() || window_.isMinimized() || !window_.windowHandle())
        return;
    const bool large = window_.isMaximized() || window_.isFullScreen();
    // A large window may have another decoration.
    if (!large && !frame_)
        fitted_ = window_.windowHandle()->frameMargins();
    const QRect frame = large ? window_.normalGeometry().marginsAdded(fitted_.value_or(QMargins()))
                              : window_.frameGeometry();
    if (!large && frame == first_) {
        if (defaults_->text(key_))
            defaults_->remove(key_);
        return;
    }
    QString text = QStringLiteral("%1 %2 %3 %4")
                       .arg(frame.x())
                       .arg(frame.y())
                       .arg(frame.width())
                       .arg(frame.height());
    if (window_.isFullScreen())
        text += QLatin1Char(' ') + QLatin1String(fullScreenWord);
    else if (large)
        text += QLatin1Char(' ') + QLatin1String(maximizedWord);
    if (defaults_->text(key_) != text.toStdString())
        defaults_->setText(key_, text.toStdString());
}

bool WindowPlace::eventFilter(QObject* watched, QEvent* event) {
    if (!window_.isWindow())
        return false;  // a pane of joined windows
    switch (event->type()) {
        case QEvent::Show:
            if (watched == &window_) {
                window_.windowHandle()->installEventFilter(this);
                settled_.start();
            }
            break;
        case QEvent::Close:
            // Afterwards the window does not know its decoration any more.
            if (watched == &window_ && changed_.isActive())
                remember();
            break;
        case QEvent::WindowStateChange:
            if (watched == &window_ && window_.isVisible()) {
                frame_.reset();  // the user has chosen another size
                changed_.start();
            }
            break;
        case QEvent::Expose:
        case QEvent::Move:
        case QEvent::Resize:
            if (event->type() != QEvent::Expose && window_.isVisible())
                changed_.start();
            if (frame_ && watched != &window_)
                QTimer::singleShot(0, this, [this] {
                    if (window_.isVisible())
                        fit(window_.windowHandle()->frameMargins());
                });
            break;
        default:
            break;
    }
    return false;
}

}  // namespace tembrix
