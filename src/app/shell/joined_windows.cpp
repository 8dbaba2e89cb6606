#include "app/shell/joined_windows.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QShowEvent>
#include <QSplitter>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <map>

#include "app/theme/theme.h"

namespace tembrix {

namespace {

constexpr double shareOfScreen = 0.8;  // of the window, once it is no longer maximized

// A line with the title of a pane, bright while the pane is current. Screen readers have the title
// from the pane itself.
class PaneHeader final : public QWidget {
  public:
    PaneHeader(const QWidget* pane, const JoinedWindows* joined, QWidget* parent)
        : QWidget(parent), pane_(pane), joined_(joined) {
        setFixedHeight(fontMetrics().height() + theme::unit);
        const auto repaint = QOverload<>::of(&QWidget::update);
        connect(pane, &QWidget::windowTitleChanged, this, repaint);
        connect(joined, &JoinedWindows::currentChanged, this, repaint);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        const bool current = joined_->current() == pane_;
        QPainter painter(this);
        painter.fillRect(rect(), current ? theme::raised : theme::panel);
        painter.setPen(current ? theme::text : theme::secondaryText);
        const QRect line = rect().adjusted(theme::margin, 0, -theme::margin, 0);
        painter.drawText(
            line, Qt::AlignVCenter | Qt::AlignLeft,
            fontMetrics().elidedText(pane_->windowTitle(), Qt::ElideRight, line.width()));
    }

  private:
    const QWidget* pane_;
    const JoinedWindows* joined_;
};

// The next control of the pane that the tab key stops at, after `from`; null without another one.
QWidget* tabStop(const QWidget* pane, QWidget* from, bool forward = true) {
    const auto step = [forward](const QWidget* widget) {
        return forward ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (QWidget* next = step(from); next != from; next = step(next))
        if (pane->isAncestorOf(next) && (next->focusPolicy() & Qt::TabFocus) && next->isVisible() &&
            next->isEnabled() && !next->focusProxy())
            return next;
    return nullptr;
}

// What gets the focus with its pane: what had it last, else the first control.
QWidget* focusIn(QWidget* pane) {
    QWidget* last = pane->focusWidget();
    if (last && last->isVisible() && last->isEnabled())
        return last;
    QWidget* first = tabStop(pane, pane);
    return first ? first : pane;
}

// A pane with its header. The tab key stays in it as in a window, and so does the focus of a
// control that is disabled.
class PaneBox final : public QWidget {
  public:
    using QWidget::QWidget;

  protected:
    bool focusNextPrevChild(bool next) override {
        QWidget* stop = tabStop(this, focusWidget() ? focusWidget() : this, next);
        if (stop)
            stop->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        // The only control keeps the focus. One that is disabled gives it up.
        return stop || (focusWidget() && focusWidget()->isEnabled());
    }
};

}  // namespace

JoinedWindows::JoinedWindows() {
    setObjectName("project");
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    connect(qApp, &QApplication::focusChanged, this,
            [this](const QWidget*, const QWidget* now) { followFocus(now); });
}

bool JoinedWindows::areNeeded() {
    return QGuiApplication::platformName().startsWith("wayland");
}

void JoinedWindows::setName(const QString& name) {
    setWindowTitle(name);
    setAccessibleName(name);
}

void JoinedWindows::add(QWidget* pane) {
    auto* box = new PaneBox(this);
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(new PaneHeader(pane, this, box));
    column->addWidget(pane, 1);
    panes_.push_back({box, pane, {}});
}

void JoinedWindows::setFrame(QWidget* pane, const QRect& frame) {
    for (Pane& each : panes_)
        if (each.widget == pane)
            each.frame = frame;
}

void JoinedWindows::remove(QWidget* pane) {
    closing_ = true;
    hide();
    const auto children = findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (auto child = children.rbegin(); child != children.rend(); ++child)
        if ((*child)->isWindow())
            delete *child;
    std::erase_if(panes_, [pane](const Pane& each) { return each.widget == pane; });
    if (panes_.empty())
        deleteLater();
}

void JoinedWindows::arrange() {
    if (arranged_)
        return;
    arranged_ = true;
    std::map<int, std::multimap<int, Pane*>> rows;
    for (Pane& pane : panes_)
        rows[pane.frame.top()].emplace(pane.frame.left(), &pane);
    auto* column = new QSplitter(Qt::Vertical, this);
    column->setChildrenCollapsible(false);
    QList<int> heights;
    for (const auto& [top, panes] : rows) {
        auto* row = new QSplitter(Qt::Horizontal, column);
        row->setChildrenCollapsible(false);
        QList<int> widths;
        for (const auto& [left, pane] : panes) {
            row->addWidget(pane->box);
            row->setStretchFactor(row->count() - 1, pane->frame.width());
            widths << pane->frame.width();
        }
        row->setSizes(widths);
        heights << panes.begin()->second->frame.height();
        column->setStretchFactor(column->count() - 1, heights.last());
    }
    column->setSizes(heights);
    static_cast<QVBoxLayout*>(layout())->addWidget(column, 1);
    resize(screen()->availableSize() * shareOfScreen);
    setWindowState(windowState() | Qt::WindowMaximized);
}

void JoinedWindows::present() {
    arrange();
    show();
}

QWidget* JoinedWindows::current() const {
    return current_ || panes_.empty() ? current_.data() : panes_.front().widget;
}

void JoinedWindows::makeCurrent(QWidget* pane) {
    if (paneAt(QApplication::focusWidget()) != pane)
        focusIn(pane)->setFocus(Qt::ActiveWindowFocusReason);
}

QWidget* JoinedWindows::paneAt(const QWidget* widget) const {
    for (const Pane& pane : panes_)
        if (widget && (pane.box == widget || pane.box->isAncestorOf(widget)))
            return pane.widget;
    return nullptr;
}

void JoinedWindows::followFocus(const QWidget* focused) {
    QWidget* pane = paneAt(focused);
    if (!pane || pane == current_)
        return;
    current_ = pane;
    Q_EMIT currentChanged();
}

// The press arrives at the native window before it does at the control under it, which may take the
// focus then.
bool JoinedWindows::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress) {
        const QPoint place = static_cast<QMouseEvent*>(event)->position().toPoint();
        if (QWidget* pane = paneAt(childAt(place)); pane && pane != current())
            makeCurrent(pane);
    }
    return false;
}

void JoinedWindows::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    windowHandle()->installEventFilter(this);
}

// The first pane may keep the project open. Otherwise the others close with it.
void JoinedWindows::closeEvent(QCloseEvent* event) {
    event->setAccepted(panes_.empty() || panes_.front().widget->close());
}

bool hasKeyboard(const QWidget& window) {
    const QWidget* active = QApplication::activeWindow();
    const auto* joined = qobject_cast<const JoinedWindows*>(active);
    return (joined ? joined->current() : active) == &window;
}

void bringForward(QWidget& window) {
    QWidget* top = window.window();
    auto* joined = qobject_cast<JoinedWindows*>(top);
    top->setWindowState(top->windowState() & ~Qt::WindowMinimized);
    if (joined)
        joined->present();
    else
        top->show();
    top->raise();
    top->activateWindow();
    if (joined)
        joined->makeCurrent(&window);
}

}  // namespace tembrix
