#include "app/marking/tag_button.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <cmath>

#include "base/color.h"
#include "base/shortened.h"
#include "base/time_text.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/tabular_label.h"
#include "core/keyboard/hot_key_codes.h"

namespace tembrix {
namespace {

constexpr int buttonHeight = 30;
constexpr int padding = theme::unit + 2;
constexpr int ringWidth = 2;
constexpr int smallHeight = 15;  // of the hot key and of the count
constexpr int smallSize = 10;
constexpr int countEdge = 3;  // distance from the count to the edges of the button
constexpr int idleMark = 8;
constexpr int smallestWidth = 64;
constexpr int largestNameWidth = 200;

const QFont& smallFont() {
    static const QFont font = theme::font(smallSize, QFont::DemiBold);
    return font;
}

const QFont& nameFont() {
    static const QFont font = theme::font(theme::textSize, QFont::Medium);
    return font;
}

int widthOfCount(const QString& count) {
    return std::max(QFontMetrics(smallFont()).horizontalAdvance(count) + padding, smallHeight);
}

// The width reserved for the count, so that the layout does not change as the count grows.
int countRoom() {
    static const int width = theme::unit + widthOfCount(QStringLiteral("000")) + countEdge;
    return width;
}

// The width of an interval's running time.
int timeWidth() {
    static const int width = static_cast<int>(
        std::ceil(tabularWidth(QFontMetricsF(smallFont()), QStringLiteral("−00:00"))));
    return width;
}

}  // namespace

TagButton::TagButton(const Tag& tag, QWidget* parent)
    : QAbstractButton(parent),
      tag_(tag),
      cap_(qtext(hotkeyCaption(shortened(tag.hotkey.value_or(""))))),
      nameWidth_(QFontMetrics(nameFont()).horizontalAdvance(qtext(shortened(tag.name)))) {
    setText(qtext(shortened(tag.name)));
    if (!cap_.isEmpty())
        capWidth_ =
            std::max(QFontMetrics(smallFont()).horizontalAdvance(cap_) + padding, smallHeight);
    nameControl(this, tag.id, text());
    setCheckable(isInterval());
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
}

bool TagButton::setCount(int count) {
    if (count_ == count)
        return false;
    count_ = count;
    update();
    return true;
}

void TagButton::setRunningTime(std::optional<double> seconds) {
    QString time;
    if (seconds)
        time = (*seconds < 0 ? QStringLiteral("−") : QString()) +
               qtext(formatTimeShort(std::abs(*seconds)));
    if (time == runningTime_)
        return;
    runningTime_ = time;
    setChecked(seconds.has_value());
    update();
}

QSize TagButton::sizeHint() const {
    int width = padding + std::min(nameWidth_, largestNameWidth) + countRoom();
    if (!cap_.isEmpty())
        width += capWidth_ + theme::unit + ringWidth;
    if (isInterval())
        width += timeWidth() + theme::unit;
    return {std::max(width, smallestWidth), buttonHeight};
}

QSize TagButton::minimumSizeHint() const {
    return {smallestWidth, buttonHeight};
}

void TagButton::keyPressEvent(QKeyEvent* event) {
    // The space key plays and pauses in this window, so Return presses the button.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void TagButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.35);
    const QColor ground = theme::toQColor(parseHexColor(tag_.color));
    const QColor ink = theme::textOn(ground);
    const bool open = !runningTime_.isEmpty();

    // A gap separates the ring from the fill, so that it is visible on any color.
    QRectF body(rect());
    const auto ring = [&](const QColor& color) {
        painter.setPen(QPen(color, ringWidth));
        painter.setBrush(Qt::NoBrush);
        const double inset = ringWidth / 2.0;
        painter.drawRoundedRect(body.adjusted(inset, inset, -inset, -inset), theme::corner + 1,
                                theme::corner + 1);
        body.adjust(ringWidth + 1, ringWidth + 1, -ringWidth - 1, -ringWidth - 1);
    };
    if (hasFocus())
        ring(theme::accent);
    if (open)
        ring(theme::text);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown() ? ground.darker(120) : underMouse() ? ground.lighter(112) : ground);
    painter.drawRoundedRect(body, theme::corner, theme::corner);

    QColor shade = ink;
    shade.setAlphaF(0.16F);
    const int middle = rect().height() / 2;
    int left = padding;
    if (!cap_.isEmpty()) {
        const QRect cap(left, middle - smallHeight / 2, capWidth_, smallHeight);
        painter.setBrush(shade);
        painter.drawRoundedRect(cap, theme::unit, theme::unit);
        painter.setPen(ink);
        painter.setFont(smallFont());
        painter.drawText(cap, Qt::AlignCenter, cap_);
        left = cap.right() + 1 + theme::unit + ringWidth;
    }

    int right = width() - countRoom();
    painter.setPen(ink);
    if (count_.value_or(0) > 0) {
        const QString count = QString::number(*count_);
        const int wide = widthOfCount(count);
        const QRect pill(width() - wide - countEdge, countEdge, wide, smallHeight);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme::background);
        painter.drawRoundedRect(pill, smallHeight / 2.0, smallHeight / 2.0);
        painter.setPen(theme::text);
        painter.setFont(smallFont());
        painter.drawText(pill, Qt::AlignCenter, count);
        right = std::min(right, pill.left() - theme::unit);
    }
    if (isInterval()) {
        right -= timeWidth();
        painter.setFont(smallFont());
        painter.setPen(ink);
        if (open) {
            const int base = middle + painter.fontMetrics().capHeight() / 2;
            drawTabular(painter, QPointF(right, base), runningTime_);
        } else {
            painter.setPen(QPen(ink, 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(
                QRectF(right + theme::unit, middle - idleMark / 2.0, idleMark, idleMark));
        }
        right -= theme::unit;
    }
    painter.setFont(nameFont());
    painter.setPen(ink);
    const QRect name(left, 0, right - left, buttonHeight);
    painter.drawText(name, Qt::AlignVCenter | Qt::AlignLeft,
                     nameWidth_ <= name.width()
                         ? text()
                         : painter.fontMetrics().elidedText(text(), Qt::ElideRight, name.width()));
}

}  // namespace tembrix
