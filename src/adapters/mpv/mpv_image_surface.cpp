#include "adapters/mpv/mpv_image_surface.h"

#include <QPainter>
#include <utility>

#include "adapters/mpv/mpv_renderer.h"
#include "adapters/mpv/mpv_stage.h"

namespace tembrix {

MpvImageSurface::MpvImageSurface(std::shared_ptr<MpvStage> stage, QWidget* parent)
    : QWidget(parent), stage_(std::move(stage)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    changes_ = stage_->changed.observe([this] { update(); });
}

void MpvImageSurface::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    stage_->setSize(surfacePixels(*this));
}

void MpvImageSurface::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    auto* renderer = stage_->renderer();
    const auto picture = renderer ? renderer->picture() : std::nullopt;
    if (!picture || picture->size != surfacePixels(*this))
        painter.fillRect(rect(), Qt::black);
    if (picture)
        painter.drawImage(fitted(picture->size, size()), *picture->image);
}

}  // namespace tembrix
