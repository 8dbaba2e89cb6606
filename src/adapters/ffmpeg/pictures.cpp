#include "adapters/ffmpeg/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tembrix {

namespace {

ImageBuffer turned(const ImageBuffer& image, int rotation) {
    if (rotation == 0)
        return image;
    const bool onSide = rotation != 180;
    ImageBuffer out(onSide ? image.height : image.width, onSide ? image.width : image.height);
    for (int y = 0; y < out.height; ++y) {
        auto* to = out.row(y);
        for (int x = 0; x < out.width; ++x, to += 4) {
            int fromX = out.width - 1 - x, fromY = out.height - 1 - y;  // 180 degrees
            if (rotation == 90) {
                fromX = y;
                fromY = image.height - 1 - x;
            } else if (rotation == 270) {
                fromX = image.width - 1 - y;
                fromY = x;
            }
            std::memcpy(to, image.row(fromY) + static_cast<std::size_t>(fromX) * 4, 4);
        }
    }
    return out;
}

}  // namespace

AVColorSpace colorMatrix(AVColorSpace said, int width, int height) {
    if (said != AVCOL_SPC_UNSPECIFIED && said != AVCOL_SPC_RGB)
        return said;
    return width >= 1280 || height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

ColorCoding colorCoding(const AVFrame& frame) {
    ColorCoding coding;
    coding.matrix = colorMatrix(frame.colorspace, frame.width, frame.height);
    const auto format = static_cast<AVPixelFormat>(frame.format);
    coding.fullRange = frame.color_range == AVCOL_RANGE_JPEG || format == AV_PIX_FMT_YUVJ420P ||
                       format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P;
    return coding;
}

void setColors(SwsContext& scaler, ColorCoding from, ColorCoding to) {
    constexpr int neutral = 1 << 16;
    sws_setColorspaceDetails(&scaler, sws_getCoefficients(from.matrix), from.fullRange ? 1 : 0,
                             sws_getCoefficients(to.matrix), to.fullRange ? 1 : 0, 0, neutral,
                             neutral);
}

Size fittedInto(Size content, Size bounds, double largest) {
    const double scale =
        std::min({largest, bounds.width / content.width, bounds.height / content.height});
    return {std::max(1.0, std::round(content.width * scale)),
            std::max(1.0, std::round(content.height * scale))};
}

Result<ImageBuffer> toImage(const AVFrame& frame, Size size, int rotation) {
    ImageBuffer image(static_cast<int>(size.width), static_cast<int>(size.height));
    const bool smaller = image.width < frame.width;
    const int flags = (smaller ? SWS_AREA : SWS_BICUBIC) | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
    const ScaleHandle scaler(sws_getContext(
        frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), image.width,
        image.height, AV_PIX_FMT_RGBA, flags, nullptr, nullptr, nullptr));
    if (!scaler)
        return mediaError(MediaFault::undecodable, "the picture's format is not known");
    const auto coding = colorCoding(frame);
    setColors(*scaler, coding, {coding.matrix, true});
    std::uint8_t* const planes[] = {image.pixels.data()};
    const int strides[] = {static_cast<int>(image.stride())};
    sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides);
    for (std::size_t alpha = 3; alpha < image.pixels.size(); alpha += 4)
        image.pixels[alpha] = 255;
    return turned(image, rotation);
}

}  // namespace tembrix
