#pragma once

#include "base/geometry.h"
#include "base/image.h"
#include "base/result.h"

#include "adapters/ffmpeg/av_handles.h"
#include "adapters/ffmpeg/pictures.h"

namespace tembrix {

// Converts pictures to the format of the film: 8-bit 4:2:0, limited range, one size. A picture that
// has this format already is returned without a copy.
class FilmCanvas {
  public:
    FilmCanvas(int width, int height, AVColorSpace matrix);
    ~FilmCanvas();
    FilmCanvas(const FilmCanvas&) = delete;
    FilmCanvas& operator=(const FilmCanvas&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    AVColorSpace matrix() const { return matrix_; }

    // Scales a source frame to fit and centers it on black. `shown` is its size in square pixels
    // after a clockwise rotation by `rotation` degrees.
    Result<FrameHandle> fit(const AVFrame& frame, Size shown, int rotation);
    Result<FrameHandle> fit(const ImageBuffer& image);
    // A writable copy.
    FrameHandle copy(const AVFrame& frame);

  private:
    FrameHandle blank();
    bool inShape(const AVFrame& frame) const;
    Result<void> scale(const AVFrame& from, ColorCoding coding, AVFrame& to, int x, int y,
                       int width, int height);

    const int width_;
    const int height_;
    const AVColorSpace matrix_;
    AVBufferPool* pool_;
    ScaleHandle scaler_;
    FrameHandle unturned_;
};

}  // namespace tembrix
