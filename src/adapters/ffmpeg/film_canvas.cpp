#include "adapters/ffmpeg/film_canvas.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <cmath>
#include <cstring>

namespace tembrix {

namespace {

constexpr int alignment = 64;

int even(double value) {
    return std::max(2, static_cast<int>(std::lround(value / 2)) * 2);
}

// Rotates one plane clockwise into another. `to` is the top left corner of the target.
void turnPlane(const std::uint8_t* from, int fromStride, int width, int height, std::uint8_t* to,
               int toStride, int rotation) {
    constexpr int block = 16;  // small enough that source and target stay in the cache
    for (int y0 = 0; y0 < height; y0 += block)
        for (int x0 = 0; x0 < width; x0 += block)
            for (int y = y0; y < std::min(y0 + block, height); ++y)
                for (int x = x0; x < std::min(x0 + block, width); ++x) {
                    const int column = rotation == 90    ? height - 1 - y
                                       : rotation == 180 ? width - 1 - x
                                                         : y;
                    const int row = rotation == 90    ? x
                                    : rotation == 180 ? height - 1 - y
                                                      : width - 1 - x;
                    to[static_cast<std::ptrdiff_t>(row) * toStride + column] =
                        from[static_cast<std::ptrdiff_t>(y) * fromStride + x];
                }
}

}  // namespace

FilmCanvas::FilmCanvas(int width, int height, AVColorSpace matrix)
    : width_(width),
      height_(height),
      matrix_(matrix),
      pool_(av_buffer_pool_init(static_cast<std::size_t>(av_image_get_buffer_size(
                                    AV_PIX_FMT_YUV420P, width, height, alignment)) +
                                    alignment,
                                nullptr)) {}

FilmCanvas::~FilmCanvas() {
    av_buffer_pool_uninit(&pool_);
}

FrameHandle FilmCanvas::blank() {
    auto frame = newFrame();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width_;
    frame->height = height_;
    frame->buf[0] = av_buffer_pool_get(pool_);
    av_image_fill_arrays(frame->data, frame->linesize, frame->buf[0]->data, AV_PIX_FMT_YUV420P,
                         width_, height_, alignment);
    return frame;
}

FrameHandle FilmCanvas::copy(const AVFrame& frame) {
    auto out = blank();
    av_frame_copy(out.get(), &frame);
    return out;
}

bool FilmCanvas::inShape(const AVFrame& frame) const {
    return frame.format == AV_PIX_FMT_YUV420P && frame.width == width_ && frame.height == height_ &&
           colorCoding(frame) == ColorCoding{matrix_, false};
}

Result<void> FilmCanvas::scale(const AVFrame& from, ColorCoding coding, AVFrame& to, int x, int y,
                               int width, int height) {
    scaler_.reset(sws_getCachedContext(
        scaler_.release(), from.width, from.height, static_cast<AVPixelFormat>(from.format), width,
        height, AV_PIX_FMT_YUV420P, SWS_BICUBIC | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    if (!scaler_)
        return mediaError(MediaFault::undecodable, "the picture's format is not known");
    setColors(*scaler_, coding, {matrix_, false});
    std::uint8_t* planes[3];
    for (int p = 0; p < 3; ++p) {
        const int shift = p == 0 ? 0 : 1;
        planes[p] =
            to.data[p] + static_cast<std::ptrdiff_t>(y >> shift) * to.linesize[p] + (x >> shift);
    }
    sws_scale(scaler_.get(), from.data, from.linesize, 0, from.height, planes, to.linesize);
    return {};
}

Result<FrameHandle> FilmCanvas::fit(const AVFrame& frame, Size shown, int rotation) {
    if (rotation == 0 && inShape(frame)) {
        auto same = newFrame();
        av_frame_ref(same.get(), &frame);
        return same;
    }
    const Size film{static_cast<double>(width_), static_cast<double>(height_)};
    const Size fitted = fittedInto(shown, film);
    const int width = std::min(even(fitted.width), width_);
    const int height = std::min(even(fitted.height), height_);
    const int x = (width_ - width) / 4 * 2, y = (height_ - height) / 4 * 2;
    auto out = blank();
    if (width < width_ || height < height_) {
        std::ptrdiff_t strides[4] = {out->linesize[0], out->linesize[1], out->linesize[2], 0};
        av_image_fill_black(out->data, strides, AV_PIX_FMT_YUV420P, AVCOL_RANGE_MPEG, width_,
                            height_);
    }
    const auto coding = colorCoding(frame);
    if (rotation == 0) {
        if (auto scaled = scale(frame, coding, *out, x, y, width, height); !scaled)
            return scaled.error();
        return out;
    }
    const bool onSide = rotation % 180 != 0;
    const int lyingWidth = onSide ? height : width, lyingHeight = onSide ? width : height;
    if (!unturned_ || unturned_->width != lyingWidth || unturned_->height != lyingHeight) {
        unturned_ = newFrame();
        unturned_->format = AV_PIX_FMT_YUV420P;
        unturned_->width = lyingWidth;
        unturned_->height = lyingHeight;
        if (av_frame_get_buffer(unturned_.get(), 0) < 0)
            return mediaError(MediaFault::undecodable, "not enough memory");
    }
    if (auto scaled = scale(frame, coding, *unturned_, 0, 0, lyingWidth, lyingHeight); !scaled)
        return scaled.error();
    for (int p = 0; p < 3; ++p) {
        const int shift = p == 0 ? 0 : 1;
        turnPlane(unturned_->data[p], unturned_->linesize[p], lyingWidth >> shift,
                  lyingHeight >> shift,
                  out->data[p] + static_cast<std::ptrdiff_t>(y >> shift) * out->linesize[p] +
                      (x >> shift),
                  out->linesize[p], rotation);
    }
    return out;
}

Result<FrameHandle> FilmCanvas::fit(const ImageBuffer& image) {
    if (image.empty())
        return mediaError(MediaFault::undecodable, "a picture of the film is empty");
    // Premultiplied colors are equal to the colors of the picture on black.
    auto frame = newFrame();
    frame->format = AV_PIX_FMT_RGB0;
    frame->width = image.width;
    frame->height = image.height;
    frame->colorspace = matrix_;
    frame->color_range = AVCOL_RANGE_JPEG;
    frame->data[0] = const_cast<std::uint8_t*>(image.pixels.data());
    frame->linesize[0] = static_cast<int>(image.stride());
    return fit(*frame, {static_cast<double>(image.width), static_cast<double>(image.height)}, 0);
}

}  // namespace tembrix
