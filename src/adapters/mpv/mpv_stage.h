#pragma once

#include <QSize>

#include "base/signal.h"

#include "adapters/mpv/mpv_renderer.h"

namespace tembrix {

// Where a player and the surfaces that show it meet, in whichever order they come: it knows the
// pictures of the newest open player and the size that the surface wants. Main thread only.
class MpvStage {
  public:
    Signal<> changed;  // another picture, or another player

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
    MpvRenderer* renderer_ = nullptr;
    QSize size_;
};

}  // namespace tembrix
