#include "adapters/ffmpeg/overlay_blend.h"

#include <algorithm>
#include <cmath>

namespace tembrix {

namespace {

struct Weights {
    double red, blue;
};

Weights weightsOf(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
            return {0.299, 0.114};
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return {0.2627, 0.0593};
        default:
            return {0.2126, 0.0722};
    }
}

// The visible part of the overlay in pixels of the film, extended to whole chroma samples.
struct Box {
    int left = 0, top = 0, right = 0, bottom = 0;
};

Box visiblePart(const MovieOverlay& overlay, int width, int height) {
    Box box{width, height, 0, 0};
    const auto& image = overlay.image;
    for (int y = std::max(0, -overlay.y); y < std::min(image.height, height - overlay.y); ++y)
        for (int x = std::max(0, -overlay.x); x < std::min(image.width, width - overlay.x); ++x)
            if (image.row(y)[static_cast<std::size_t>(x) * 4 + 3] != 0) {
                box.left = std::min(box.left, x + overlay.x);
                box.right = std::max(box.right, x + overlay.x + 1);
                box.top = std::min(box.top, y + overlay.y);
                box.bottom = std::max(box.bottom, y + overlay.y + 1);
            }
    if (box.right <= box.left)
        return {};
    return {box.left & ~1, box.top & ~1, std::min(width, (box.right + 1) & ~1),
            std::min(height, (box.bottom + 1) & ~1)};
}

// The index of the sample at x, y in a layer of the given width.
std::size_t placeOf(int x, int y, int width) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
}

}  // namespace

OverlayBlend::OverlayBlend(const MovieOverlay& overlay, int width, int height,
                           AVColorSpace matrix) {
    const Box box = visiblePart(overlay, width, height);
    const auto [kr, kb] = weightsOf(matrix);
    const auto prepare = [](Layer& layer, int x, int y, int w, int h) {
        layer = {x, y, w, h, {}, {}};
        const auto pixels = static_cast<std::size_t>(w) * static_cast<std::size_t>(h);
        layer.keep.assign(pixels, 255);
        layer.add.assign(pixels, 0);
    };
    prepare(luma_, box.left, box.top, box.right - box.left, box.bottom - box.top);
    for (Layer* chroma : {&blue_, &red_})
        prepare(*chroma, box.left / 2, box.top / 2, luma_.width / 2, luma_.height / 2);

    // Colors are premultiplied by their alpha, and so are the offsets of the film's color coding.
    const auto& image = overlay.image;
    std::vector<double> alphas(blue_.keep.size()), blues(alphas.size()), reds(alphas.size());
    for (int y = 0; y < luma_.height; ++y) {
        const int imageY = y + box.top - overlay.y;
        if (imageY < 0 || imageY >= image.height)
            continue;
        for (int x = 0; x < luma_.width; ++x) {
            const int imageX = x + box.left - overlay.x;
            if (imageX < 0 || imageX >= image.width)
                continue;
            const auto* p = image.row(imageY) + static_cast<std::size_t>(imageX) * 4;
            const double alpha = p[3];
            const double light = kr * p[0] + (1 - kr - kb) * p[1] + kb * p[2];
            const auto at = placeOf(x, y, luma_.width);
            luma_.keep[at] = static_cast<std::uint16_t>(255 - p[3]);
            luma_.add[at] = static_cast<std::uint16_t>(std::lround(16 * alpha + 219 * light));
            const auto quad = placeOf(x / 2, y / 2, blue_.width);
            if (quad >= alphas.size() || x / 2 >= blue_.width)
                continue;
            alphas[quad] += alpha / 4;
            blues[quad] += (128 * alpha + 112 * (p[2] - light) / (1 - kb)) / 4;
            reds[quad] += (128 * alpha + 112 * (p[0] - light) / (1 - kr)) / 4;
        }
    }
    for (std::size_t i = 0; i < alphas.size(); ++i) {
        blue_.keep[i] = red_.keep[i] = static_cast<std::uint16_t>(std::lround(255 - alphas[i]));
        blue_.add[i] = static_cast<std::uint16_t>(std::lround(blues[i]));
        red_.add[i] = static_cast<std::uint16_t>(std::lround(reds[i]));
    }
}

void OverlayBlend::apply(AVFrame& frame) const {
    blend(luma_, frame.data[0], frame.linesize[0]);
    blend(blue_, frame.data[1], frame.linesize[1]);
    blend(red_, frame.data[2], frame.linesize[2]);
}

void OverlayBlend::blend(const Layer& layer, std::uint8_t* plane, int stride) {
    for (int y = 0; y < layer.height; ++y) {
        auto* to = plane + static_cast<std::ptrdiff_t>(layer.y + y) * stride + layer.x;
        const auto* keep = layer.keep.data() + static_cast<std::ptrdiff_t>(y) * layer.width;
        const auto* add = layer.add.data() + static_cast<std::ptrdiff_t>(y) * layer.width;
        for (int x = 0; x < layer.width; ++x) {
            // Division by 255, rounded, for all sums that can occur.
            const std::uint32_t sum = static_cast<std::uint32_t>(to[x]) * keep[x] + add[x] + 128U;
            to[x] = static_cast<std::uint8_t>((sum * 257U) >> 16);
        }
    }
}

}  // namespace tembrix
