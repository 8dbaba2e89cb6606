#include "adapters/mpv/mpv_canvas.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QString>

#include "adapters/mpv/mpv_gl_canvas.h"
#include "adapters/mpv/mpv_image_canvas.h"

namespace tembrix {

MpvDrawing suitableDrawing() {
    QOpenGLContext context;
    QOffscreenSurface surface;
    surface.create();
    if (!QOpenGLContext::globalShareContext() || !context.create() ||
        !context.makeCurrent(&surface))
        return MpvDrawing::inMemory;
    const auto* text = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
    const QString renderer = QString::fromLatin1(text);
    context.doneCurrent();
    for (const char* byProcessor : {"llvmpipe", "softpipe", "swrast", "Software"})
        if (renderer.contains(QLatin1String(byProcessor), Qt::CaseInsensitive))
            return MpvDrawing::inMemory;
    return MpvDrawing::openGl;
}

std::unique_ptr<MpvCanvas> makeCanvas(MpvDrawing drawing) {
    if (drawing == MpvDrawing::openGl)
        return std::make_unique<MpvGlCanvas>();
    return std::make_unique<MpvImageCanvas>();
}

}  // namespace tembrix
