#pragma once

#include <cstdint>
#include <vector>

namespace tembrix {

// Pixels in rows from the top, 4 bytes each in the order R, G, B, A, alpha premultiplied, without
// padding between rows.
struct ImageBuffer {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    ImageBuffer() = default;
    ImageBuffer(int w, int h)
        : width(w),
          height(h),
          pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 4) {}

    bool empty() const { return pixels.empty(); }
    std::size_t stride() const { return static_cast<std::size_t>(width) * 4; }
    const std::uint8_t* row(int y) const {
        return pixels.data() + stride() * static_cast<std::size_t>(y);
    }
    std::uint8_t* row(int y) { return pixels.data() + stride() * static_cast<std::size_t>(y); }

    bool operator==(const ImageBuffer&) const = default;
};

}  // namespace tembrix
