#pragma once

#include <QImage>
#include <QSize>
#include <array>
#include <memory>

struct mpv_handle;
struct mpv_render_context;
class QThread;

namespace tembrix {

// Where pictures are drawn: on the graphics card, or in memory where there is none. Drawing a
// picture in memory takes less of a processor than OpenGL does when a processor plays its part.
enum class MpvDrawing { openGl, inMemory };

// What suits the display. On the main thread.
MpvDrawing suitableDrawing();

// A finished picture, in the one form or in the other.
struct MpvPicture {
    QSize size;                     // pixels
    unsigned texture = 0;           // of the contexts that the application shares
    const QImage* image = nullptr;  // lives as long as the picture is the one on show
};

// Three pictures to draw into, with the means to draw. Made on the main thread; all else happens on
// the drawing thread, but for picture(), which is asked of a picture that is not being drawn.
class MpvCanvas {
  public:
    static constexpr std::size_t pictureCount = 3;

    virtual ~MpvCanvas() = default;

    // Prepares for the thread on which the drawing will happen.
    virtual bool prepare(QThread& thread) = 0;
    // Null where it cannot be drawn like this.
    virtual mpv_render_context* open(mpv_handle* core) = 0;
    virtual void draw(mpv_render_context* context, std::size_t picture, QSize size) = 0;
    virtual void close(mpv_render_context* context) = 0;

    virtual MpvPicture picture(std::size_t picture) const = 0;
};

std::unique_ptr<MpvCanvas> makeCanvas(MpvDrawing drawing);

}  // namespace tembrix
