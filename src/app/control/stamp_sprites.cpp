#include "app/control/stamp_sprites.h"

#include <QLinearGradient>
#include <QPainter>

#include "app/theme/theme.h"
#include "core/control/timeline_axis.h"

namespace tembrix {

namespace {

constexpr std::size_t mostPixels = 6'000'000;  // 24 MB
constexpr double corner = 6;

// Paints a blurred shadow as rounded rectangles that grow and fade.
void paintShadow(QPainter& painter, const QRectF& rect, QColor color, bool selected) {
    const int radius = selected ? 4 : 2;
    const double offset = selected ? 2 : 1;
    color.setAlphaF(0.3F / static_cast<float>(radius));
    painter.setBrush(color);
    for (int grow = radius; grow > 0; --grow) {
        const double by = grow - 0.5;
        painter.drawRoundedRect(rect.adjusted(-by, offset - by, by, offset + by), corner + by,
                                corner + by);
    }
}

}  // namespace

std::size_t StampSprites::Hash::operator()(const StampLook& look) const noexcept {
    const std::uint64_t packed = (static_cast<std::uint64_t>(look.color) << 32) ^
                                 (static_cast<std::uint64_t>(look.width) << 14) ^
                                 (static_cast<std::uint64_t>(look.height) << 6) ^
                                 static_cast<std::uint64_t>(look.top) ^
                                 (static_cast<std::uint64_t>(look.overlapping) << 62) ^
                                 (static_cast<std::uint64_t>(look.selected) << 63);
    return static_cast<std::size_t>(packed * 0x9E3779B97F4A7C15ULL >> 7);
}

void StampSprites::paint(QPainter& painter, const StampLook& look, double pixelRatio) {
    const QRectF rect(0, look.top / 2.0, look.width / pixelRatio, look.height / 2.0);
    const QColor color = QColor::fromRgb(look.color);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    paintShadow(painter, rect, color, look.selected);

    // The gradient is slightly transparent, so the background is painted first to hide the shadow
    // beneath the stamp.
    painter.setBrush(theme::background);
    painter.drawRoundedRect(rect, corner, corner);
    QLinearGradient fill(rect.topLeft(), rect.bottomLeft());
    QColor faded = color;
    faded.setAlphaF(0.8F);
    fill.setColorAt(0, color);
    fill.setColorAt(1, faded);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, corner, corner);

    if (look.overlapping || look.selected) {
        const double width = look.selected ? 2.5 : 1.5;
        painter.setPen(QPen(look.overlapping ? theme::destructive : theme::accent, width));
        painter.setBrush(Qt::NoBrush);
        const double inset = width / 2;
        painter.drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), corner - inset,
                                corner - inset);
    }
    painter.restore();
}

std::uint32_t StampSprites::color(const std::string& hex) {
    const auto found = colors_.find(hex);
    if (found != colors_.end())
        return found->second;
    return colors_.emplace(hex, theme::toQColor(parseHexColor(hex)).rgb()).first->second;
}

const QPixmap& StampSprites::sprite(const StampLook& look, double pixelRatio) {
    if (pixelRatio != pixelRatio_ || pixels_ > mostPixels) {
        sprites_.clear();
        pixels_ = 0;
        pixelRatio_ = pixelRatio;
    }
    QPixmap& pixmap = sprites_[look];
    if (pixmap.isNull()) {
        const QSize size(look.width + static_cast<int>(2 * margin * pixelRatio),
                         static_cast<int>(TimelineMetrics::rowHeight * pixelRatio));
        pixmap = QPixmap(size);
        pixmap.setDevicePixelRatio(pixelRatio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.translate(margin, 0);
        paint(painter, look, pixelRatio);
        pixels_ += static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    }
    return pixmap;
}

}  // namespace tembrix
