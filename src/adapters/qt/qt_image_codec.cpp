#include "adapters/qt/qt_image_codec.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QImageWriter>

#include "base/result.h"

#include "adapters/qt/image_conversion.h"

namespace tembrix {
namespace {

constexpr int allocationLimit = 1024;  // megabytes; more than any picture on a screen needs

Error imageError(int code, const QString& text) {
    return {"image", code, text.toStdString()};
}

Result<Bytes> encode(const QImage& image, const char* format, int quality) {
    if (image.isNull())
        return imageError(2, "the image is empty");
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    if (!writer.write(image))
        return imageError(3, writer.errorString());
    return Bytes(file.begin(), file.end());
}

}  // namespace

Result<ImageBuffer> QtImageCodec::decode(BytesView file) const {
    auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(file.data()),
                                         static_cast<qsizetype>(file.size()));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    QImageReader::setAllocationLimit(allocationLimit);
    const auto format = reader.format();
    if (format != "png" && format != "jpeg")
        return imageError(1, "neither PNG nor JPEG");
    QImage image = reader.read();
    if (image.isNull())
        return imageError(1, reader.errorString());
    if (image.colorSpace().isValid())
        image.convertToColorSpace(QColorSpace::SRgb);
    return toBuffer(image);
}

Result<Bytes> QtImageCodec::encodePng(const ImageBuffer& image) const {
    return encode(viewOf(image), "png", -1);
}

Result<Bytes> QtImageCodec::encodeJpeg(const ImageBuffer& image, int quality) const {
    if (image.empty())
        return encode({}, "jpeg", quality);
    // Premultiplied components are equal to those of the picture on black.
    auto opaque = viewOf(image).convertToFormat(QImage::Format_RGBA8888_Premultiplied).copy();
    opaque.reinterpretAsFormat(QImage::Format_RGBX8888);
    return encode(opaque, "jpeg", quality);
}

}  // namespace tembrix
