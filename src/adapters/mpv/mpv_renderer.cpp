#include "adapters/mpv/mpv_renderer.h"

#include <QMetaObject>
#include <QThread>
#include <mpv/client.h>
#include <mpv/render.h>
#include <utility>

namespace tembrix {

namespace {

// During a seek the core also requests to redraw the old picture. It is still on screen, and
// drawing it would only slow down decoding.
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

MpvRenderer::MpvRenderer(mpv_handle* core, MpvDrawing drawing, Drawn drawn)
    : drawn_(std::make_shared<Drawn>(std::move(drawn))), canvas_(makeCanvas(drawing)) {
    thread_.reset(QThread::create([this, core] { run(core); }));
    thread_->setObjectName("Video pictures");
    if (!canvas_->prepare(*thread_)) {
        thread_.reset();
        return;
    }
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

void MpvRenderer::setDrawsRepeats(bool draws) {
    const std::lock_guard lock(mutex_);
    drawsRepeats_ = draws;
}

std::optional<MpvPicture> MpvRenderer::picture() {
    const std::lock_guard lock(mutex_);
    if (!newest_)
        return std::nullopt;
    shown_ = newest_;
    return canvas_->picture(*shown_);
}

bool MpvRenderer::isSettled() {
    const std::lock_guard lock(mutex_);
    return !pending_ && !drawing_;
}

void MpvRenderer::run(mpv_handle* core) {
    mpv_render_context* context = canvas_->open(core);
    if (context)
        mpv_render_context_set_update_callback(context, &MpvRenderer::wake, this);
    {
        const std::lock_guard lock(mutex_);
        works_ = context != nullptr;
        started_ = true;
    }
    changed_.notify_all();
    if (context) {
        drawPictures(context);
        mpv_render_context_set_update_callback(context, nullptr, nullptr);
    }
    canvas_->close(context);
}

void MpvRenderer::drawPictures(mpv_render_context* context) {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return stop_ || pending_; });
        if (stop_)
            return;
        pending_ = false;
        const bool redraw = std::exchange(redraw_, false);
        const bool drawsRepeats = drawsRepeats_;
        const QSize size = size_;
        drawing_ = true;
        lock.unlock();
        const bool hasFrame = mpv_render_context_update(context) & MPV_RENDER_UPDATE_FRAME;
        const bool isNew = redraw || (hasFrame && (drawsRepeats || isNewPicture(context)));
        if (isNew)
            draw(context, size);
        else if (hasFrame)
            skip(context);
        lock.lock();
        drawing_ = false;
        QMetaObject::invokeMethod(this, "tellDrawn", Qt::QueuedConnection, Q_ARG(bool, isNew));
    }
}

void MpvRenderer::draw(mpv_render_context* context, QSize size) {
    if (size.isEmpty())
        return skip(context);
    std::size_t free = 0;
    {
        const std::lock_guard lock(mutex_);
        while (free == shown_ || free == newest_)
            ++free;
    }
    canvas_->draw(context, free, size);
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

void MpvRenderer::tellDrawn(bool isNew) {
    const auto drawn = drawn_;
    (*drawn)(isNew);
}

}  // namespace tembrix
