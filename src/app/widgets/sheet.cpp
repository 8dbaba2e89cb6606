#include "app/widgets/sheet.h"

#include <QBitmap>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>

#include "app/theme/theme.h"
#include "app/widgets/qt_text.h"

namespace tembrix {

namespace {
constexpr double cardCorner = 2.0 * theme::corner;
}

Sheet::Sheet(QWidget* parent, const Texts& texts, std::string_view titleKey)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), texts_(texts) {
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowModality(Qt::WindowModal);
    nameControl(this, texts, titleKey);

    auto* column = new QVBoxLayout(this);
    const int edge = 2 * theme::spacing + theme::unit;
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
    setTitle(qtext(texts.text(titleKey)));
    setMinimumWidth(320);
}

void Sheet::setTitle(const QString& title) {
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
    return button;
}

QPushButton* Sheet::addCancelButton(std::string_view key) {
    auto* button = makeButton(texts_, key, ButtonLook::quiet, this);
    button->setAutoDefault(true);
    connect(button, &QPushButton::clicked, this, &QDialog::reject);
    buttons_->addWidget(button);
    return button;
}

QPushButton* Sheet::addSideButton(std::string_view key, ButtonLook look) {
    auto* button = makeButton(texts_, key, look, this);
    button->setAutoDefault(true);
    buttons_->insertWidget(sideButtons_++, button);
    return button;
}

void Sheet::present() {
    setAttribute(Qt::WA_DeleteOnClose);
    // The window gets the focus back at once, because the next press may be a hot key.
    if (QWidget* owner = parentWidget())
        connect(this, &QDialog::finished, owner->window(), &QWidget::activateWindow);
    open();
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
    painter.setPen(Qt::color1);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), cardCorner, cardCorner);
    painter.end();
    setMask(shape);
}

void Sheet::mousePressEvent(QMouseEvent* event) {
    // The sheet has no title bar; the user moves it by dragging its background.
    if (event->button() == Qt::LeftButton && windowHandle())
        windowHandle()->startSystemMove();
}

}  // namespace tembrix
