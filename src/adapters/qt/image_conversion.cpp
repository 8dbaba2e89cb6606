#include "adapters/qt/image_conversion.h"

#include <cstring>

namespace tembrix {

QImage viewOf(const ImageBuffer& image) {
    return QImage(image.pixels.data(), image.width, image.height,
                  static_cast<qsizetype>(image.stride()), QImage::Format_RGBA8888_Premultiplied);
}

ImageBuffer toBuffer(const QImage& image) {
    const auto converted = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    ImageBuffer buffer(converted.width(), converted.height());
    for (int y = 0; y < buffer.height; ++y)
        std::memcpy(buffer.row(y), converted.constScanLine(y), buffer.stride());
    return buffer;
}

}  // namespace tembrix
