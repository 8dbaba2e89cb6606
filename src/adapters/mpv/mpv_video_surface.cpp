#include "adapters/mpv/mpv_video_surface.h"

#include <QMatrix4x4>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <utility>

#include "adapters/mpv/mpv_renderer.h"
#include "adapters/mpv/mpv_stage.h"

namespace tembrix {

MpvVideoSurface::MpvVideoSurface(std::shared_ptr<MpvStage> stage, QWidget* parent)
    : QOpenGLWidget(parent), stage_(std::move(stage)) {
    changes_ = stage_->changed.observe([this] { update(); });
}

MpvVideoSurface::~MpvVideoSurface() {
    releaseGL();
    if (context())
        context()->disconnect(this);  // it goes with the base, when this is no surface any more
}

QSize MpvVideoSurface::pixels() const {
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

void MpvVideoSurface::initializeGL() {
    blitter_.create();
    // The context goes with the top-level window, which may change.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &MpvVideoSurface::releaseGL,
            Qt::UniqueConnection);
}

void MpvVideoSurface::releaseGL() {
    if (!blitter_.isCreated())
        return;
    makeCurrent();
    blitter_.destroy();
    doneCurrent();
}

void MpvVideoSurface::resizeGL(int, int) {
    stage_->setSize(pixels());
}

void MpvVideoSurface::paintGL() {
    auto* gl = context()->functions();
    gl->glClearColor(0, 0, 0, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    auto* renderer = stage_->renderer();
    const auto picture = renderer ? renderer->picture() : std::nullopt;
    if (!picture)
        return;
    // The picture has this surface's size, borders included; while the window is being resized it
    // may lag behind, and keeps its shape.
    const QSize all = pixels();
    QRect place({}, picture->size.scaled(all, Qt::KeepAspectRatio));
    place.moveCenter(QRect({}, all).center());
    blitter_.bind();
    blitter_.blit(picture->texture, QOpenGLTextureBlitter::targetTransform(place, QRect({}, all)),
                  QOpenGLTextureBlitter::OriginBottomLeft);
    blitter_.release();
}

}  // namespace tembrix
