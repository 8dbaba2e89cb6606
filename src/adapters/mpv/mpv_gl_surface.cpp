#include "adapters/mpv/mpv_gl_surface.h"

#include <QMatrix4x4>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <utility>

#include "adapters/mpv/mpv_renderer.h"
#include "adapters/mpv/mpv_stage.h"

namespace tembrix {

MpvGlSurface::MpvGlSurface(std::shared_ptr<MpvStage> stage, QWidget* parent)
    : QOpenGLWidget(parent), stage_(std::move(stage)) {
    changes_ = stage_->changed.observe([this] { update(); });
}

MpvGlSurface::~MpvGlSurface() {
    releaseGL();
    // The base class destroys the context after this destructor has ended.
    if (context())
        context()->disconnect(this);
}

void MpvGlSurface::initializeGL() {
    blitter_.create();
    // The context is destroyed with the top-level window, which may change.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &MpvGlSurface::releaseGL,
            Qt::UniqueConnection);
}

void MpvGlSurface::releaseGL() {
    if (!blitter_.isCreated())
        return;
    makeCurrent();
    blitter_.destroy();
    doneCurrent();
}

void MpvGlSurface::resizeGL(int, int) {
    stage_->setSize(surfacePixels(*this));
}

void MpvGlSurface::paintGL() {
    auto* gl = context()->functions();
    gl->glClearColor(0, 0, 0, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    auto* renderer = stage_->renderer();
    const auto picture = renderer ? renderer->picture() : std::nullopt;
    if (!picture)
        return;
    const QSize all = surfacePixels(*this);
    const QRect place = fitted(picture->size, all);
    blitter_.bind();
    blitter_.blit(picture->texture, QOpenGLTextureBlitter::targetTransform(place, QRect({}, all)),
                  QOpenGLTextureBlitter::OriginBottomLeft);
    blitter_.release();
}

}  // namespace tembrix
