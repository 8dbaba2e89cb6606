#pragma once

#include "base/bytes.h"
#include "base/image.h"

#include "ports/images.h"

namespace tembrix {

// PNG and JPEG by Qt. Decoding applies the orientation of a photo and converts to sRGB.
class QtImageCodec final : public ImageCodec {
  public:
    Result<ImageBuffer> decode(BytesView file) const override;
    Result<Bytes> encodePng(const ImageBuffer& image) const override;
    // Transparent pixels become black.
    Result<Bytes> encodeJpeg(const ImageBuffer& image, int quality) const override;
};

}  // namespace tembrix
