#pragma once

#include <QObject>
#include <QSize>
#include <array>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

class QOffscreenSurface;
class QOpenGLContext;
class QOpenGLFramebufferObject;
class QThread;
struct mpv_handle;
struct mpv_render_context;

namespace tembrix {

// Draws the pictures of one mpv core into textures, on a thread and an OpenGL context of its own,
// so that the windows never wait for a picture and the core never for a window. The textures are
// shared with every context of the application (Qt::AA_ShareOpenGLContexts). Made and used on the
// main thread, before the core loads a file and not beyond the core's life.
class MpvRenderer final : public QObject {
    Q_OBJECT
  public:
    struct Picture {
        unsigned texture = 0;
        QSize size;  // pixels
    };

    // `drawn` is called on the main thread after new pictures; it may destroy the renderer.
    MpvRenderer(mpv_handle* core, std::function<void()> drawn);
    ~MpvRenderer() override;

    // False where there is no OpenGL: the core then plays without a picture.
    bool works() const { return works_; }

    // The size of the pictures to come, in pixels; an empty one draws none.
    void setSize(QSize pixels);

    // The newest picture. It stays as it is until the next call.
    std::optional<Picture> picture();

    // Whether every picture that the core has handed over is drawn.
    bool isSettled();

  private:
    void run(mpv_handle* core);
    void drawPictures(mpv_render_context* context);
    void draw(mpv_render_context* context, QSize size);
    static void wake(void* renderer);
    Q_INVOKABLE void tellDrawn();

    static constexpr int none = -1;

    std::shared_ptr<std::function<void()>> drawn_;
    std::unique_ptr<QOffscreenSurface> surface_;
    std::unique_ptr<QOpenGLContext> context_;
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
    // Three pictures: one on show, the newest, and one to draw into.
    std::array<std::unique_ptr<QOpenGLFramebufferObject>, 3> buffers_;
    int shown_ = none;
    int newest_ = none;
};

}  // namespace tembrix
