#pragma once

#include <QRect>
#include <QSize>
#include <QWidget>

#include "base/signal.h"

#include "adapters/mpv/mpv_canvas.h"
#include "adapters/mpv/mpv_renderer.h"

namespace tembrix {

// Connects players with the surfaces that show them, in whichever order they are created. It stores
// the renderer of the newest player and the size of the surface. Main thread only.
class MpvStage {
  public:
    explicit MpvStage(MpvDrawing drawing) : drawing_(drawing) {}

    Signal<> changed;  // another picture, or another player

    MpvDrawing drawing() const { return drawing_; }

    void enter(MpvRenderer& renderer) {
        renderer_ = &renderer;
        renderer_->setSize(size_);
        changed.emit();
    }
    void leave(MpvRenderer& renderer) {
        if (renderer_ != &renderer)
            return;
        renderer_ = nullptr;
        changed.emit();
    }

    MpvRenderer* renderer() const { return renderer_; }

    void setSize(QSize pixels) {
        size_ = pixels;
        if (renderer_)
            renderer_->setSize(size_);
    }

  private:
    MpvDrawing drawing_;
    MpvRenderer* renderer_ = nullptr;
    QSize size_;
};

inline QSize surfacePixels(const QWidget& surface) {
    return (QSizeF(surface.size()) * surface.devicePixelRatioF()).toSize();
}

// The area of a picture in a surface. Pictures are drawn in the size of the surface, including
// borders. While a window is resized, a picture with the old size may be shown; its aspect ratio is
// kept.
inline QRect fitted(QSize picture, QSize room) {
    QRect place({}, picture.scaled(room, Qt::KeepAspectRatio));
    place.moveCenter(QRect({}, room).center());
    return place;
}

}  // namespace tembrix
