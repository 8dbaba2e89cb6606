#pragma once

#include "base/geometry.h"
#include "base/image.h"

#include "adapters/ffmpeg/av_handles.h"

namespace tembrix {

// How a video's numbers stand for colors.
struct ColorCoding {
    AVColorSpace matrix = AVCOL_SPC_BT709;
    bool fullRange = false;
    bool operator==(const ColorCoding&) const = default;
};

// The frame's own coding; a frame that does not say follows the custom for its size.
ColorCoding colorCoding(const AVFrame& frame);
// The same from what a stream says of itself.
AVColorSpace colorMatrix(AVColorSpace said, int width, int height);

// Tells the scaler the codings of both sides. Sides in RGB are always full range.
void setColors(SwsContext& scaler, ColorCoding from, ColorCoding to);

// `content` fitted whole into `bounds`, never larger than `largest` times its size.
Size fittedInto(Size content, Size bounds, double largest = 1e9);

// The frame as pixels of `size` (before it is turned), then turned clockwise by 0, 90, 180 or 270
// degrees.
Result<ImageBuffer> toImage(const AVFrame& frame, Size size, int rotation);

}  // namespace tembrix
