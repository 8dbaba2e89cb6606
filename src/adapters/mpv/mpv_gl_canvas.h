#pragma once

#include "adapters/mpv/mpv_canvas.h"

class QOffscreenSurface;
class QOpenGLContext;
class QOpenGLFramebufferObject;

namespace tembrix {

// Draws into textures that all OpenGL contexts of the application share
// (Qt::AA_ShareOpenGLContexts).
class MpvGlCanvas final : public MpvCanvas {
  public:
    MpvGlCanvas();
    ~MpvGlCanvas() override;

    bool prepare(QThread& thread) override;
    mpv_render_context* open(mpv_handle* core) override;
    void draw(mpv_render_context* context, std::size_t picture, QSize size) override;
    void close(mpv_render_context* context) override;
    MpvPicture picture(std::size_t picture) const override;

  private:
    std::unique_ptr<QOffscreenSurface> surface_;
    std::unique_ptr<QOpenGLContext> context_;
    std::array<std::unique_ptr<QOpenGLFramebufferObject>, pictureCount> buffers_;
};

}  // namespace tembrix
