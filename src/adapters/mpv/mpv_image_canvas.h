#pragma once

#include <vector>

#include "adapters/mpv/mpv_canvas.h"

namespace tembrix {

// Draws into memory.
class MpvImageCanvas final : public MpvCanvas {
  public:
    bool prepare(QThread& thread) override;
    mpv_render_context* open(mpv_handle* core) override;
    void draw(mpv_render_context* context, std::size_t picture, QSize size) override;
    void close(mpv_render_context* context) override;
    MpvPicture picture(std::size_t picture) const override;

  private:
    struct Buffer {
        std::vector<uchar> bytes;
        QImage image;  // its pixels are in `bytes`
    };
    std::array<Buffer, pictureCount> buffers_;
};

}  // namespace tembrix
