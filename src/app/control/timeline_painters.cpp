#include "app/control/timeline_painters.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "base/geometry.h"

#include "app/theme/theme.h"
#include "app/widgets/qt_text.h"
#include "core/control/timeline_ruler.h"
#include "core/records/timeline_records.h"

namespace tembrix {

namespace {

QColor withAlpha(QColor color, float alpha) {
    color.setAlphaF(alpha);
    return color;
}

// The area of a stamp on the axis, including a resize in progress.
Rect shownRect(const TimelineStamp& stamp, int level, const AxisView& view,
               const StampResize* resize) {
    return resize && resize->stamp() == stamp.id
               ? stampRect(resize->x(), resize->width(), level, view.axis)
               : stampRect(stamp, level, view.axis);
}

StampLook lookOf(std::uint32_t color, const Rect& rect, int level, double pixelRatio,
                 bool selected) {
    return {color,
            std::max(static_cast<int>(std::lround(rect.width * pixelRatio)), 1),
            static_cast<int>(std::lround(rect.y * 2)),
            static_cast<int>(std::lround(rect.height * 2)),
            level > 0,
            selected};
}

void paintGrips(QPainter& painter, const Rect& stamp, const AxisView& view, double top) {
    const auto grips = gripRects(stamp, view.axis);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const Rect& grip : {grips.left, grips.right}) {
        const QRectF area(view.left(grip.x), top + grip.y, grip.width, grip.height);
        painter.setPen(Qt::NoPen);
        painter.setBrush(withAlpha(theme::accent, 0.85F));
        painter.drawRoundedRect(area.adjusted(1, 1, -1, -1), 3, 3);
        painter.setBrush(theme::onAccent);
        const double bar = std::max(area.height() - 12, 3.0);
        painter.drawRoundedRect(
            QRectF(area.center().x() - 0.75, area.center().y() - bar / 2, 1.5, bar), 0.75, 0.75);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void paintOutline(QPainter& painter, const Rect& stamp, const AxisView& view, double top,
                  double width) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme::text, width));
    painter.setBrush(Qt::NoBrush);
    const double half = width / 2;
    painter.drawRoundedRect(QRectF(view.left(stamp.x), top + stamp.y, stamp.width, stamp.height)
                                .adjusted(-half, -half, half, half),
                            6, 6);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

}  // namespace

void TimeGridPainter::paint(QPainter& painter, const QRectF& rect, const AxisView& view) {
    const double first = view.scroll + rect.left() - 1;
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (const auto& tick : axisTicks(view.axis, first, first + rect.width() + 2)) {
        // Minor lines should be half a pixel wide; they are drawn one pixel wide at half the
        // opacity.
        const auto strength = static_cast<float>(theme::grid.alphaF()) * (tick.major ? 1.0F : 0.5F);
        painter.fillRect(QRectF(std::floor(view.left(tick.x)), rect.top(), 1, rect.height()),
                         withAlpha(theme::grid, strength));
    }
}

void TimestampsHeaderPainter::paint(QPainter& painter, const QRectF& rect, const AxisView& view) {
    constexpr int textSize = 9;
    constexpr double tickHeight = 4;
    constexpr double half = 24;  // half of the width reserved for a time
    painter.fillRect(rect, theme::panel);
    painter.fillRect(QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1), theme::line);
    painter.setFont(theme::font(textSize, QFont::Medium));
    const double first = view.scroll + rect.left() - half;
    for (const auto& tick : axisTicks(view.axis, first, first + rect.width() + 2 * half)) {
        const double x = view.left(tick.x);
        painter.fillRect(QRectF(std::floor(x), rect.bottom() - tickHeight, 1, tickHeight),
                         theme::secondaryText);
        // The first and the last time are aligned so that they do not leave the axis.
        auto flags = Qt::AlignVCenter | Qt::AlignHCenter;
        QRectF area(x - half, rect.top(), 2 * half, rect.height() - tickHeight);
        if (tick.x < half / 2) {
            area = area.translated(half + 3, 0);
            flags = Qt::AlignVCenter | Qt::AlignLeft;
        } else if (tick.x > view.axis.width - half / 2) {
            area = area.translated(-half - 3, 0);
            flags = Qt::AlignVCenter | Qt::AlignRight;
        }
        painter.setPen(tick.major ? theme::text : theme::secondaryText);
        painter.drawText(area, static_cast<int>(flags), qtext(tickText(tick)));
    }
}

void RowGroundPainter::paint(QPainter& painter, const QRectF& rect, const AxisView& view,
                             bool selected) {
    painter.fillRect(rect, theme::background);
    TimeGridPainter::paint(painter, rect, view);
    const QColor tint = selected ? theme::accent : theme::secondaryText;
    QLinearGradient ground(rect.topLeft(), rect.bottomLeft());
    ground.setColorAt(0, withAlpha(tint, selected ? 0.15F : 0.05F));
    ground.setColorAt(1, withAlpha(tint, selected ? 0.08F : 0.02F));
    painter.fillRect(rect, ground);
    painter.fillRect(QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1), theme::grid);
    if (selected) {
        const QColor border = withAlpha(theme::accent, 0.3F);
        painter.fillRect(QRectF(rect.left(), rect.top(), rect.width(), 1), border);
        painter.fillRect(QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1), border);
    }
}

void StampsPainter::paint(QPainter& painter, const QRectF& rect, const AxisView& view,
                          const TimelineRow& row, const Marks& marks, StampSprites& sprites) {
    // The grips of a short stamp are beside it.
    constexpr double around = StampSprites::margin + TimelineMetrics::gripWidth;
    const double from = view.scroll + rect.left() - around;
    const double to = from + rect.width() + 2 * around;
    const double ratio = view.pixelRatio;
    std::optional<Rect> selectedRect;
    std::optional<Rect> cursorRect;
    std::optional<Rect> pointedRect;
    const auto& stamps = row.line->stamps;
    for (std::size_t i = 0; i < stamps.size(); ++i) {
        const TimelineStamp& stamp = *stamps[i];
        const Rect at = shownRect(stamp, row.levels[i], view, marks.resize);
        if (at.right() < from || at.x > to ||
            (marks.move && marks.move->info().stampID == stamp.id))
            continue;
        const bool selected = marks.selected == stamp.id;
        const StampLook look =
            lookOf(sprites.color(stamp.colorHex), at, row.levels[i], ratio, selected);
        const double x = std::round(view.left(at.x) * ratio) / ratio;
        if (StampSprites::isKept(look)) {
            painter.drawPixmap(QPointF(x - StampSprites::margin, rect.top()),
                               sprites.sprite(look, ratio));
        } else {
            painter.translate(x, rect.top());
            StampSprites::paint(painter, look, ratio);
            painter.translate(-x, -rect.top());
        }
        if (selected)
            selectedRect = at;
        if (marks.cursor == stamp.id && !selected)
            cursorRect = at;
        if (marks.pointed == stamp.id)
            pointedRect = at;
    }
    if (pointedRect && pointedRect != cursorRect)
        paintOutline(painter, *pointedRect, view, rect.top(), 1);
    if (selectedRect)
        paintGrips(painter, *selectedRect, view, rect.top());
    if (cursorRect)
        paintOutline(painter, *cursorRect, view, rect.top(), 1.5);
}

void StampsPainter::paintMoving(QPainter& painter, const QRectF& rect, const AxisView& view,
                                const TimelineRow& row, const StampMove& move, bool selected,
                                StampSprites& sprites) {
    const auto index = row.stampIndex(move.info().stampID);
    if (!index)
        return;
    const TimelineStamp& stamp = *row.line->stamps[*index];
    const Rect at = stampRect(stamp, row.levels[*index], view.axis);
    painter.save();
    painter.translate(view.left(at.x), rect.top() + move.offsetY());
    const StampLook look =
        lookOf(sprites.color(stamp.colorHex), at, row.levels[*index], view.pixelRatio, selected);
    StampSprites::paint(painter, look, view.pixelRatio);
    painter.restore();
}

QRectF PlayheadPainter::strip(const QRectF& rect, const AxisView& view, double x) {
    const double left = std::round((view.left(x) - width / 2) * view.pixelRatio) / view.pixelRatio;
    return {left, rect.top(), width, rect.height()};
}

void PlayheadPainter::paint(QPainter& painter, const QRectF& rect, const AxisView& view, double x) {
    painter.fillRect(strip(rect, view, x), theme::playhead);
}

}  // namespace tembrix
