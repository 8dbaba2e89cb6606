#pragma once

#include <QImage>
#include <QSize>
#include <array>
#include <memory>

struct mpv_handle;
struct mpv_render_context;
class QThread;

namespace tembrix {

// Where pictures are drawn: on the graphics card or in memory. Drawing in memory needs less
// processor time than OpenGL that is emulated by the processor.
enum class MpvDrawing { openGl, inMemory };

// The drawing method that suits the display. Main thread only.
MpvDrawing suitableDrawing();

// A finished picture, as a texture or as an image.
struct MpvPicture {
    QSize size;                     // pixels
    unsigned texture = 0;           // shared by all OpenGL contexts of the application
    const QImage* image = nullptr;  // valid until another picture is shown
};

// A buffer of three pictures. Constructed on the main thread and used on the drawing thread;
// picture() may be called on any thread for a picture that is not being drawn.
class MpvCanvas {
  public:
    static constexpr std::size_t pictureCount = 3;

    virtual ~MpvCanvas() = default;

    // Prepares drawing on `thread`. Returns false if that is not possible.
    virtual bool prepare(QThread& thread) = 0;
    // Returns null if the core does not support this drawing method.
    virtual mpv_render_context* open(mpv_handle* core) = 0;
    virtual void draw(mpv_render_context* context, std::size_t picture, QSize size) = 0;
    virtual void close(mpv_render_context* context) = 0;

    virtual MpvPicture picture(std::size_t picture) const = 0;
};

std::unique_ptr<MpvCanvas> makeCanvas(MpvDrawing drawing);

}  // namespace tembrix
