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

// Draws the pictures of one mpv core on its own thread, so that windows and the core never wait for
// each other. Main thread only. Must be constructed before the core loads a file and destroyed
// before the core.
class MpvRenderer final : public QObject {
    Q_OBJECT
  public:
    // Called on the main thread after a picture of the core was processed, drawn or not. May
    // destroy the renderer.
    using Drawn = std::function<void(bool isNew)>;

    MpvRenderer(mpv_handle* core, MpvDrawing drawing, Drawn drawn);
    ~MpvRenderer() override;

    // Returns false if the core plays without pictures.
    bool works() const { return works_; }

    // Sets the size of the next pictures in pixels. With an empty size, none are drawn.
    void setSize(QSize pixels);

    // Sets whether pictures are redrawn when the core requests it. After a pause this may be a late
    // picture that was never drawn; during a seek it is the old one.
    void setDrawsRepeats(bool draws);

    // The newest picture. It stays the same until the next call.
    std::optional<MpvPicture> picture();

    // Whether all pictures from the core have been processed.
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
    bool pending_ = false;  // the core has something to draw, or the size has changed
    bool redraw_ = false;
    bool drawsRepeats_ = false;
    bool drawing_ = false;
    QSize size_;
    // One picture is on screen, one is the newest, and the third one is being drawn.
    std::optional<std::size_t> shown_;
    std::optional<std::size_t> newest_;
};

}  // namespace tembrix
