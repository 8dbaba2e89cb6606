#pragma once

#include "base/geometry.h"
#include "base/image.h"

#include "adapters/ffmpeg/av_handles.h"

namespace tembrix {

// How the values of a video encode colors.
struct ColorCoding {
    AVColorSpace matrix = AVCOL_SPC_BT709;
    bool fullRange = false;
    bool operator==(const ColorCoding&) const = default;
};

// The coding that the frame specifies, or the usual one for its size.
ColorCoding colorCoding(const AVFrame& frame);
// The same for the parameters of a stream.
AVColorSpace colorMatrix(AVColorSpace said, int width, int height);

// Sets the color codings of input and output of the scaler. RGB is always full range.
void setColors(SwsContext& scaler, ColorCoding from, ColorCoding to);

// The size of `content` scaled to fit into `bounds`, at most `largest` times as large.
Size fittedInto(Size content, Size bounds, double largest = 1e9);

// Converts the frame to `size` pixels and rotates it clockwise by 0, 90, 180 or 270 degrees. `size`
// is the size before the rotation.
Result<ImageBuffer> toImage(const AVFrame& frame, Size size, int rotation);

}  // namespace tembrix
