#pragma once

#include <QObject>
#include <QSize>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "adapters/mpv/mpv_canvas.h"

class QThread;

namespace tembrix {

// Draws the pictures of one mpv core on a thread of its own, so that the windows never wait for a
// picture and the core never for a window. Made and used on the main thread, before the core loads
// a file and not beyond the core's life.
class MpvRenderer final : public QObject {
    Q_OBJECT
  public:
    // Told on the main thread when it is done with what the core handed over, whether that made a
    // new picture or not. May destroy the renderer.
    using Drawn = std::function<void(bool isNew)>;

    MpvRenderer(mpv_handle* core, MpvDrawing drawing, Drawn drawn);
    ~MpvRenderer() override;

    // If false, the core plays without a picture.
    bool works() const { return works_; }

    // The size of the pictures to come, in pixels; an empty one draws none.
    void setSize(QSize pixels);

    // The newest picture. It stays as it is until the next call.
    std::optional<MpvPicture> picture();

    // Whether every picture that the core has handed over is drawn.
    bool isSettled();

  private:
    void run(mpv_handle* core);
    void drawPictures(mpv_render_context* context);
    void draw(mpv_render_context* context, QSize size);
    static void wake(void* renderer);
    Q_INVOKABLE void tellDrawn(bool isNew);

    std::shared_ptr<Drawn> drawn_;
    std::unique_ptr<MpvCanvas> canvas_;
    std::unique_ptr<QThread> thread_;
    bool works_ = false;

    std::mutex mutex_;
    std::condition_variable changed_;
    bool started_ = false;
    bool stop_ = false;
    bool pending_ = false;  // the core has something to draw, or the size is new
    bool redraw_ = false;
    bool drawing_ = false;
    QSize size_;
    // One picture is on show, one is the newest, and the third is to draw into.
    std::optional<std::size_t> shown_;
    std::optional<std::size_t> newest_;
};

}  // namespace tembrix
