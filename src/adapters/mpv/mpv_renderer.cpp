#include "adapters/mpv/mpv_renderer.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QThread>
#include <mpv/client.h>
#include <mpv/render_gl.h>
#include <utility>

namespace tembrix {

namespace {

// During a seek the core also asks for the old picture to be drawn again, which is still there and
// would only keep the machine from decoding.
bool isNewPicture(mpv_render_context* context) {
    mpv_render_frame_info info{};
    mpv_render_context_get_info(context, {MPV_RENDER_PARAM_NEXT_FRAME_INFO, &info});
    return !(info.flags & MPV_RENDER_FRAME_INFO_REDRAW);
}

// Takes the frame from the core without drawing it.
void skip(mpv_render_context* context) {
    int yes = 1;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_SKIP_RENDERING, &yes},
                                     {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context_render(context, parameters);
    mpv_render_context_report_swap(context);
}

}  // namespace

MpvRenderer::MpvRenderer(mpv_handle* core, std::function<void()> drawn)
    : drawn_(std::make_shared<std::function<void()>>(std::move(drawn))),
      surface_(std::make_unique<QOffscreenSurface>()),
      context_(std::make_unique<QOpenGLContext>()) {
    context_->setShareContext(QOpenGLContext::globalShareContext());
    if (!context_->shareContext() || !context_->create())
        return;
    surface_->setFormat(context_->format());
    surface_->create();
    if (!surface_->isValid())
        return;

    thread_.reset(QThread::create([this, core] { run(core); }));
    thread_->setObjectName("Video pictures");
    context_->moveToThread(thread_.get());
    thread_->start();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return started_; });
}

MpvRenderer::~MpvRenderer() {
    if (!thread_)
        return;
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
    }
    changed_.notify_all();
    thread_->wait();
}

void MpvRenderer::setSize(QSize pixels) {
    {
        const std::lock_guard lock(mutex_);
        if (size_ == pixels)
            return;
        size_ = pixels;
        pending_ = redraw_ = true;
    }
    changed_.notify_all();
}

std::optional<MpvRenderer::Picture> MpvRenderer::picture() {
    const std::lock_guard lock(mutex_);
    if (newest_ == none)
        return std::nullopt;
    shown_ = newest_;
    const auto& buffer = *buffers_[static_cast<std::size_t>(shown_)];
    return Picture{buffer.texture(), buffer.size()};
}

bool MpvRenderer::isSettled() {
    const std::lock_guard lock(mutex_);
    return !pending_ && !drawing_;
}

void MpvRenderer::run(mpv_handle* core) {
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
    const bool created = mpv_render_context_create(&context, core, parameters) >= 0;
    if (created)
        mpv_render_context_set_update_callback(context, &MpvRenderer::wake, this);
    {
        const std::lock_guard lock(mutex_);
        works_ = created;
        started_ = true;
    }
    changed_.notify_all();

    if (created) {
        drawPictures(context);
        mpv_render_context_set_update_callback(context, nullptr, nullptr);
        mpv_render_context_free(context);
    }
    for (auto& buffer : buffers_)
        buffer.reset();
    context_->doneCurrent();
    context_->moveToThread(QCoreApplication::instance()->thread());
}

void MpvRenderer::drawPictures(mpv_render_context* context) {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return stop_ || pending_; });
        if (stop_)
            return;
        pending_ = false;
        const bool redraw = std::exchange(redraw_, false);
        const QSize size = size_;
        drawing_ = true;
        lock.unlock();
        const bool hasFrame = mpv_render_context_update(context) & MPV_RENDER_UPDATE_FRAME;
        if (redraw || (hasFrame && isNewPicture(context)))
            draw(context, size);
        else if (hasFrame)
            skip(context);
        lock.lock();
        drawing_ = false;
        if (hasFrame || redraw)
            QMetaObject::invokeMethod(this, "tellDrawn", Qt::QueuedConnection);
    }
}

void MpvRenderer::draw(mpv_render_context* context, QSize size) {
    if (size.isEmpty())
        return skip(context);
    int free = 0;
    {
        const std::lock_guard lock(mutex_);
        while (free == shown_ || free == newest_)
            ++free;
    }
    auto& buffer = buffers_[static_cast<std::size_t>(free)];
    if (!buffer || buffer->size() != size)
        buffer = std::make_unique<QOpenGLFramebufferObject>(size);
    mpv_opengl_fbo target{static_cast<int>(buffer->handle()), size.width(), size.height(), 0};
    int flip = 1;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_OPENGL_FBO, &target},
                                     {MPV_RENDER_PARAM_FLIP_Y, &flip},
                                     {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context_render(context, parameters);
    context_->functions()->glFinish();  // another context reads the texture next
    {
        const std::lock_guard lock(mutex_);
        newest_ = free;
    }
    mpv_render_context_report_swap(context);
}

void MpvRenderer::wake(void* renderer) {
    auto* self = static_cast<MpvRenderer*>(renderer);
    {
        const std::lock_guard lock(self->mutex_);
        self->pending_ = true;
    }
    self->changed_.notify_all();
}

void MpvRenderer::tellDrawn() {
    const auto drawn = drawn_;
    (*drawn)();
}

}  // namespace tembrix
