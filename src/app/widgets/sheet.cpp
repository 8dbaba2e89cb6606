#include "app/widgets/sheet.h"

#include <QApplication>
#include <QBitmap>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <string>
#include <utility>

#include "app/theme/theme.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

namespace tembrix {

namespace {
constexpr double cardCorner = 2.0 * theme::corner;

Sheet* closing = nullptr;  // the sheet whose answer is being handled

// The window that a sheet last gave the focus to. It becomes active only after a while.
QPointer<QWidget>& nextActive() {
    static QPointer<QWidget> window;
    return window;
}
}  // namespace

Sheet::Sheet(QWidget* parent, const Texts& texts, std::string_view titleKey)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), texts_(texts) {
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowModality(Qt::WindowModal);
    setObjectName(qtext(titleKey));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(edge, edge, edge, edge);
    column->setSpacing(theme::margin);
    title_ = new QLabel(this);
    title_->setTextFormat(Qt::PlainText);
    title_->setWordWrap(true);
    setLook(title_, LabelLook::title);
    column->addWidget(title_);
    content_ = new QVBoxLayout;
    content_->setSpacing(theme::margin);
    column->addLayout(content_, 1);
    buttons_ = new QHBoxLayout;
    buttons_->setContentsMargins(0, theme::unit, 0, 0);
    buttons_->setSpacing(theme::spacing);
    buttons_->addStretch(1);
    column->addLayout(buttons_);
    followLanguage(this, texts, [this, key = std::string(titleKey)] {
        if (!hasOwnTitle_)
            showTitle(qtext(texts_.text(key)));
    });
    setMinimumWidth(320);
}

void Sheet::setTitle(const QString& title) {
    hasOwnTitle_ = true;
    showTitle(title);
}

void Sheet::showTitle(const QString& title) {
    title_->setText(title);
    title_->setVisible(!title.isEmpty());
    setWindowTitle(title);
    setAccessibleName(title);
}

QPushButton* Sheet::addAcceptButton(std::string_view key, ButtonLook look, bool closes) {
    auto* button = makeButton(texts_, key, look, this);
    button->setAutoDefault(true);
    button->setDefault(true);
    if (closes)
        connect(button, &QPushButton::clicked, this, &QDialog::accept);
    buttons_->addWidget(button);
    destroys_ = look == ButtonLook::destructive;
    preferCancel();
    return button;
}

QPushButton* Sheet::addCancelButton(std::string_view key) {
    auto* button = makeButton(texts_, key, ButtonLook::quiet, this);
    button->setAutoDefault(true);
    connect(button, &QPushButton::clicked, this, &QDialog::reject);
    buttons_->addWidget(button);
    cancel_ = button;
    preferCancel();
    return button;
}

// Return, pressed once too often, must not destroy anything.
void Sheet::preferCancel() {
    if (!destroys_ || !cancel_)
        return;
    cancel_->setDefault(true);
    cancel_->setFocus();
}

QPushButton* Sheet::addSideButton(std::string_view key, ButtonLook look) {
    auto* button = makeButton(texts_, key, look, this);
    button->setAutoDefault(true);
    buttons_->insertWidget(sideButtons_++, button);
    return button;
}

void Sheet::present() {
    setAttribute(Qt::WA_DeleteOnClose);
    if (closing) {
        closing->isFollowed_ = true;
        windowBefore_ = closing->windowBefore_;
        focusBefore_ = closing->focusBefore_;
    } else if (QWidget* window = QApplication::activeWindow() ? QApplication::activeWindow()
                                                              : nextActive().data()) {
        windowBefore_ = window;
        focusBefore_ = window->focusWidget();
    }
    if (keepsOverWindow_ && parentWidget())
        moveOverWindow();
    open();
    // Now that the default button is set, Return presses whichever other button has the focus. In
    // buttons that are ticked it accepts the sheet.
    for (auto* button : findChildren<QPushButton*>())
        if (!button->isCheckable())
            button->setAutoDefault(true);
}

// In the middle of the window, within its width. A sheet that is too high goes on below it.
void Sheet::moveOverWindow() {
    adjustSize();
    const QRect area = parentWidget()->window()->geometry();
    const QPoint room(area.width() - width(), area.height() - height());
    move(area.topLeft() + QPoint(room.x() / 2, std::max(room.y() / 2, 0)));
}

void Sheet::done(int result) {
    const QPointer<Sheet> self(this);
    const QWidget* before = windowBefore_ ? windowBefore_->focusWidget() : nullptr;
    Sheet* const outer = std::exchange(closing, this);
    QDialog::done(result);
    closing = outer;
    // The answer may have chosen another place for it, such as a new entry of a list.
    if (self && windowBefore_ && windowBefore_->focusWidget() != before)
        focusBefore_ = windowBefore_->focusWidget();
    if (!self)
        return;
    scope_.reset();
    if (!isFollowed_)
        giveFocusBack();
}

// At once, because the next press may be a hot key.
void Sheet::giveFocusBack() {
    QWidget* window = windowBefore_;
    while (window && !window->isVisible())
        window = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    if (!window && parentWidget())
        window = parentWidget()->window();
    if (!window)
        return;
    nextActive() = window;
    window->activateWindow();
    if (focusBefore_ && focusBefore_->window() == window && focusBefore_->isVisible() &&
        focusBefore_->isEnabled())
        focusBefore_->setFocus();
}

void Sheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(theme::edge);
    painter.setBrush(theme::panel);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cardCorner, cardCorner);
}

void Sheet::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    // Without a compositor, transparent corners would be painted black.
    QBitmap shape(size());
    shape.fill(Qt::color0);
    QPainter painter(&shape);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    // A little larger than the card: the mask has no smooth edges.
    painter.drawRoundedRect(QRectF(rect()), cardCorner - 1, cardCorner - 1);
    painter.end();
    setMask(shape);
}

void Sheet::mousePressEvent(QMouseEvent* event) {
    // The sheet has no title bar; the user moves it by dragging its background.
    if (event->button() == Qt::LeftButton && windowHandle())
        windowHandle()->startSystemMove();
}

}  // namespace tembrix
