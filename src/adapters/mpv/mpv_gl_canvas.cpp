#include "adapters/mpv/mpv_gl_canvas.h"

#include <QCoreApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QThread>
#include <mpv/client.h>
#include <mpv/render_gl.h>

namespace tembrix {

MpvGlCanvas::MpvGlCanvas()
    : surface_(std::make_unique<QOffscreenSurface>()),
      context_(std::make_unique<QOpenGLContext>()) {}

MpvGlCanvas::~MpvGlCanvas() = default;

bool MpvGlCanvas::prepare(QThread& thread) {
    context_->setShareContext(QOpenGLContext::globalShareContext());
    if (!context_->shareContext() || !context_->create())
        return false;
    surface_->setFormat(context_->format());
    surface_->create();
    if (!surface_->isValid())
        return false;
    context_->moveToThread(&thread);
    return true;
}

mpv_render_context* MpvGlCanvas::open(mpv_handle* core) {
    context_->makeCurrent(surface_.get());
    mpv_opengl_init_params gl{[](void* context, const char* name) -> void* {
                                  return reinterpret_cast<void*>(
                                      static_cast<QOpenGLContext*>(context)->getProcAddress(name));
                              },
                              context_.get()};
    mpv_render_param parameters[] = {
        {MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(MPV_RENDER_API_TYPE_OPENGL)},
        {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &gl},
        {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context* context = nullptr;
    return mpv_render_context_create(&context, core, parameters) >= 0 ? context : nullptr;
}

void MpvGlCanvas::draw(mpv_render_context* context, std::size_t picture, QSize size) {
    auto& buffer = buffers_.at(picture);
    if (!buffer || buffer->size() != size)
        buffer = std::make_unique<QOpenGLFramebufferObject>(size);
    mpv_opengl_fbo target{static_cast<int>(buffer->handle()), size.width(), size.height(), 0};
    int flip = 1;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_OPENGL_FBO, &target},
                                     {MPV_RENDER_PARAM_FLIP_Y, &flip},
                                     {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context_render(context, parameters);
    context_->functions()->glFinish();  // another context reads the texture next
}

void MpvGlCanvas::close(mpv_render_context* context) {
    if (context)
        mpv_render_context_free(context);
    for (auto& buffer : buffers_)
        buffer.reset();
    context_->doneCurrent();
    context_->moveToThread(QCoreApplication::instance()->thread());
}

MpvPicture MpvGlCanvas::picture(std::size_t picture) const {
    const auto& buffer = *buffers_.at(picture);
    return {buffer.size(), buffer.texture(), nullptr};
}

}  // namespace tembrix
