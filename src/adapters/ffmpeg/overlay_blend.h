#pragma once

#include <cstdint>
#include <vector>

#include "ports/movie_renderer.h"

#include "adapters/ffmpeg/av_handles.h"

namespace tembrix {

// An overlay that is converted once to the colors of the film and blended over many frames.
class OverlayBlend {
  public:
    // For films of `width` by `height` pixels with the colors of `matrix`, limited range.
    OverlayBlend(const MovieOverlay& overlay, int width, int height, AVColorSpace matrix);

    // Blends over a writable frame of 8-bit 4:2:0. Accesses only the rows that the overlay covers.
    void apply(AVFrame& frame) const;

  private:
    // The overlay's part of one plane. Each pixel becomes (old * keep + add) / 255.
    struct Layer {
        int x = 0, y = 0, width = 0, height = 0;
        std::vector<std::uint16_t> keep;
        std::vector<std::uint16_t> add;
    };
    static void blend(const Layer& layer, std::uint8_t* plane, int stride);

    Layer luma_;
    Layer blue_;
    Layer red_;
};

}  // namespace tembrix
