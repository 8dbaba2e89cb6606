#include "app/marking/time_event_chip.h"

#include <QKeyEvent>
#include <QPainter>

#include "base/shortened.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"

namespace tembrix {
namespace {

constexpr int chipHeight = 24;
constexpr int compactHeight = 19;
constexpr int mark = 14;
constexpr int compactMark = 12;
constexpr int padding = theme::unit + 2;
constexpr int room = 2;  // space at both ends into which an armed chip grows
constexpr double armedScale = 1.02;
constexpr int animationTime = 200;  // milliseconds

}  // namespace

TimeEventChip::TimeEventChip(const TimeEvent& event, bool compact, QWidget* parent)
    : QAbstractButton(parent),
      height_(compact ? compactHeight : chipHeight),
      mark_(compact ? compactMark : mark) {
    setFont(theme::font(compact ? theme::captionSize : theme::textSize - 1));
    setText(qtext(shortened(event.name)));
    nameControl(this, event.id, text());
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
    scale_.setDuration(animationTime);
    scale_.setStartValue(1.0);
    scale_.setEndValue(armedScale);
    scale_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&scale_, &QVariantAnimation::valueChanged, this, [this] { update(); });
}

void TimeEventChip::setArmed(bool armed) {
    if (armed == isChecked())
        return;
    setChecked(armed);
    scale_.setDirection(armed ? QVariantAnimation::Forward : QVariantAnimation::Backward);
    scale_.start();
}

QSize TimeEventChip::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()) + mark_ + 2 * padding + theme::unit + 2 * room,
            height_};
}

void TimeEventChip::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void TimeEventChip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.35);
    const double scale = scale_.currentValue().toDouble();
    const QPointF center = QRectF(rect()).center();
    painter.translate(center);
    painter.scale(scale, scale);
    painter.translate(-center);

    const bool armed = isChecked();
    const QRectF body = QRectF(rect()).adjusted(room, 1, -room, -1);
    painter.setPen(QPen(hasFocus() ? (armed ? theme::text : theme::accent)
                                   : (armed ? theme::accentFill : theme::line),
                        hasFocus() ? 2 : 1));
    painter.setBrush(armed ? theme::accentFill : underMouse() ? theme::hovered : theme::raised);
    painter.drawRoundedRect(body, body.height() / 2, body.height() / 2);

    const QRectF disc(body.left() + padding - 1, body.center().y() - mark_ / 2.0, mark_, mark_);
    if (armed) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme::onAccent);
        painter.drawEllipse(disc);
        painter.setPen(QPen(theme::accentFill, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF c = disc.center();
        const QPointF tick[] = {c + QPointF(-3, 0), c + QPointF(-0.8, 2.4), c + QPointF(3.2, -2.4)};
        painter.drawPolyline(tick, 3);
    } else {
        painter.setPen(QPen(theme::disabledText, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(disc.adjusted(1, 1, -1, -1));
    }
    painter.setPen(armed ? theme::onAccent : theme::text);
    painter.setFont(font());
    painter.drawText(body.adjusted(padding + mark_ + theme::unit, 0, 0, 0), Qt::AlignVCenter,
                     text());
}

}  // namespace tembrix
