#include "app/theme/flat_icon_engine.h"

#include <QPainter>
#include <QPixmap>
#include <cmath>

#include "app/theme/theme.h"

namespace tembrix::theme {

void FlatIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
                           QIcon::State state) {
    const qreal scale = painter->device()->devicePixelRatioF();
    auto image = scaledPixmap(rect.size() * scale, mode, state, scale);
    image.setDevicePixelRatio(scale);
    painter->drawPixmap(rect, image);
}

QPixmap FlatIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) {
    return scaledPixmap(size, mode, state, 1);
}

// At a whole scale the drawing for the size in points is enlarged, because drawings for larger
// sizes have thinner lines and wider margins. At other scales it would be blurred.
QPixmap FlatIconEngine::scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State,
                                     qreal scale) {
    QPixmap image(size);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const qreal whole = std::floor(scale);
    if (whole > 1)
        painter.drawPixmap(image.rect(), shape_.pixmap(size / whole, whole));
    else
        shape_.paint(&painter, image.rect());
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), mode == QIcon::Disabled ? disabledText : color_);
    return image;
}

}  // namespace tembrix::theme
