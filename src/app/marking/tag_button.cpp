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
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/tabular_label.h"
#include "core/keyboard/hot_key_codes.h"

namespace tembrix {
namespace {

constexpr int capPadding = 6;  // of the hot key and of the count
constexpr int ringWidth = 2;
constexpr int smallHeight = 15;  // of the hot key and of the count
constexpr int smallSize = 10;
constexpr int idleMark = 8;

const QFont& smallFont() {
    static const QFont font = theme::font(smallSize, QFont::DemiBold);
    return font;
}

int widthOfCount(const QString& count) {
    return std::max(QFontMetrics(smallFont()).horizontalAdvance(count) + capPadding, smallHeight);
}

// The width of an interval's running time.
int timeWidth() {
    static const int width = static_cast<int>(
        std::ceil(tabularWidth(QFontMetricsF(smallFont()), QStringLiteral("−00:00"))));
    return width;
}

}  // namespace

// The measures of a density.
struct TagButton::Density {
    int height;
    int padding;    // at the left edge
    int gap;        // between the hot key, the name and the count
    int countEdge;  // distance from the count to the edges of the button
    int smallestWidth;
    int largestNameWidth;
    QFont nameFont;
    int digits;  // of a count whose room is reserved, so that the layout does not change with it

    int countRoom() const { return gap + widthOfCount(QString(digits, u'0')) + countEdge; }
};

const TagButton::Density& TagButton::density(bool compact) {
    static const Density usual{30, 6, 4, 3, 64, 200, theme::font(theme::textSize, QFont::Medium),
                               3};
    static const Density dense{19, 4, 2, 1, 32, 110, theme::font(theme::captionSize, QFont::Medium),
                               1};
    return compact ? dense : usual;
}

TagButton::TagButton(const Tag& tag, bool compact, QWidget* parent)
    : QAbstractButton(parent),
      density_(density(compact)),
      tag_(tag),
      cap_(qtext(hotkeyCaption(shortened(tag.hotkey.value_or(""))))),
      nameWidth_(QFontMetrics(density_.nameFont).horizontalAdvance(qtext(shortened(tag.name)))) {
    setText(qtext(shortened(tag.name)));
    if (!cap_.isEmpty())
        capWidth_ =
            std::max(QFontMetrics(smallFont()).horizontalAdvance(cap_) + capPadding, smallHeight);
    nameControl(this, tag.id, text());
    tellKey(this, cap_);
    setCheckable(isInterval());
    setFocusPolicy(Qt::TabFocus);
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
    int width =
        density_.padding + std::min(nameWidth_, density_.largestNameWidth) + density_.countRoom();
    if (!cap_.isEmpty())
        width += capWidth_ + density_.gap + ringWidth;
    if (isInterval())
        width += timeWidth() + theme::unit;
    return {std::max(width, density_.smallestWidth), density_.height};
}

QSize TagButton::minimumSizeHint() const {
    return {density_.smallestWidth, density_.height};
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
    // Changes of the color and what is under the name go away from the color of the text, so that
    // it stays readable.
    const bool white = ink == QColor(Qt::white);
    const auto away = [&](int percent) {
        return white ? ground.darker(percent) : ground.lighter(percent);
    };
    painter.setBrush(isDown() ? away(125) : underMouse() ? away(112) : ground);
    painter.drawRoundedRect(body, theme::corner, theme::corner);

    QColor shade(white ? Qt::black : Qt::white);
    shade.setAlphaF(0.25F);
    const int middle = rect().height() / 2;
    int left = density_.padding;
    if (!cap_.isEmpty()) {
        const QRect cap(left, middle - smallHeight / 2, capWidth_, smallHeight);
        painter.setBrush(shade);
        painter.drawRoundedRect(cap, theme::unit, theme::unit);
        painter.setPen(ink);
        painter.setFont(smallFont());
        painter.drawText(cap, Qt::AlignCenter, cap_);
        left = cap.right() + 1 + density_.gap + ringWidth;
    }

    int right = width() - density_.countRoom();
    painter.setPen(ink);
    if (count_.value_or(0) > 0) {
        const QString count = QString::number(*count_);
        const int wide = widthOfCount(count);
        const QRect pill(width() - wide - density_.countEdge, density_.countEdge, wide,
                         smallHeight);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme::background);
        painter.drawRoundedRect(pill, smallHeight / 2.0, smallHeight / 2.0);
        painter.setPen(theme::text);
        painter.setFont(smallFont());
        painter.drawText(pill, Qt::AlignCenter, count);
        right = std::min(right, pill.left() - density_.gap);
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
    painter.setFont(density_.nameFont);
    painter.setPen(ink);
    const QRect name(left, 0, right - left, density_.height);
    painter.drawText(name, Qt::AlignVCenter | Qt::AlignLeft,
                     nameWidth_ <= name.width()
                         ? text()
                         : painter.fontMetrics().elidedText(text(), Qt::ElideRight, name.width()));
}

}  // namespace tembrix
