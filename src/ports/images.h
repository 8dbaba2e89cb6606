#pragma once

#include <string>
#include <variant>
#include <vector>

#include "base/bytes.h"
#include "base/color.h"
#include "base/geometry.h"
#include "base/image.h"
#include "base/result.h"

namespace tembrix {

// Decodes and encodes pictures. Thread-safe. Errors: domain "image".
class ImageCodec {
  public:
    virtual ~ImageCodec() = default;
    virtual Result<ImageBuffer> decode(BytesView file) const = 0;  // PNG or JPEG
    virtual Result<Bytes> encodePng(const ImageBuffer& image) const = 0;
    virtual Result<Bytes> encodeJpeg(const ImageBuffer& image, int quality) const = 0;
};

enum class FontWeight { regular, semibold };

// A text in one color and weight. Line feeds break the line.
struct TextRun {
    std::string text;
    Color color;
    FontWeight weight = FontWeight::semibold;
    bool operator==(const TextRun&) const = default;
};

struct RichText {
    std::vector<TextRun> runs;
    double fontSize = 13;  // pixels
    bool operator==(const RichText&) const = default;
};

// Measures text in the font of the program.
class TextMeasure {
  public:
    virtual ~TextMeasure() = default;
    // The size of the text wrapped at `width`, with unlimited height.
    virtual Size boundingSize(const RichText& text, double width) const = 0;
};

// The elements of a picture, back to front, in pixels from the top left.
struct FillRect {
    Rect rect;
    Color color;
    bool operator==(const FillRect&) const = default;
};
struct DrawText {
    Rect rect;  // left-aligned, wrapped, elided at the end
    RichText text;
    bool operator==(const DrawText&) const = default;
};
struct DisplayList {
    Size size;
    std::vector<std::variant<FillRect, DrawText>> items;
    bool operator==(const DisplayList&) const = default;
};

// Paints a display list on a transparent background. Thread-safe.
class PictureRenderer {
  public:
    virtual ~PictureRenderer() = default;
    virtual ImageBuffer render(const DisplayList& list) const = 0;
};

}  // namespace tembrix
