#pragma once

#include <QRect>
#include <QSize>
#include <QWidget>

#include "base/signal.h"

#include "adapters/mpv/mpv_canvas.h"
#include "adapters/mpv/mpv_renderer.h"

namespace tembrix {

// Where a player and the surfaces that show it meet, in whichever order they come: it knows the
// pictures of the newest open player and the size that the surface wants. Main thread only.
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

// Where a picture stands in a room. Pictures are drawn in the size of the surface, borders
// included; while a window is being resized one may lag behind, and keeps its shape.
inline QRect fitted(QSize picture, QSize room) {
    QRect place({}, picture.scaled(room, Qt::KeepAspectRatio));
    place.moveCenter(QRect({}, room).center());
    return place;
}

}  // namespace tembrix
