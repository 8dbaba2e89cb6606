#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "ports/images.h"

namespace tembrix {

// A font whose characters are all 0.6 of the font size wide and whose lines are 1.2 of it high.
// Lines are broken at blanks, and inside words wider than the line.
class FakeTextMeasure final : public TextMeasure {
  public:
    Size boundingSize(const RichText& text, double width) const override {
        std::string all;
        for (const auto& run : text.runs)
            all += run.text;
        if (all.empty())
            return {};
        const double advance = text.fontSize * 0.6;
        const auto limit = std::max<std::size_t>(1, static_cast<std::size_t>(width / advance));
        std::size_t lines = 1, column = 0, word = 0, widest = 0;
        const auto put = [&](std::size_t count) {
            if (column + count > limit && column > 0) {
                ++lines;
                column = 0;
            }
            column += count;
            for (; column > limit; column -= limit)
                ++lines;
            widest = std::max(widest, std::min(column, limit));
        };
        for (const char c : all) {
            if (c == '\n') {
                put(word);
                word = column = 0;
                ++lines;
            } else if (c == ' ') {
                put(word + 1);
                word = 0;
            } else if ((c & 0xC0) != 0x80) {  // the first byte of a character
                ++word;
            }
        }
        put(word);
        return {static_cast<double>(widest) * advance,
                static_cast<double>(lines) * text.fontSize * 1.2};
    }
};

// Fills rectangles and marks the places of texts with their first color. Records the lists.
class FakePictureRenderer final : public PictureRenderer {
  public:
    ImageBuffer render(const DisplayList& list) const override {
        ImageBuffer image(static_cast<int>(std::ceil(list.size.width)),
                          static_cast<int>(std::ceil(list.size.height)));
        for (const auto& item : list.items) {
            if (const auto* fill = std::get_if<FillRect>(&item))
                paint(image, fill->rect, fill->color);
            else if (const auto* text = std::get_if<DrawText>(&item);
                     text && !text->text.runs.empty())
                paint(image, text->rect, text->text.runs.front().color);
        }
        const std::lock_guard lock(mutex_);
        lists_.push_back(list);
        return image;
    }
    std::vector<DisplayList> lists() const {
        const std::lock_guard lock(mutex_);
        return lists_;
    }

  private:
    static void paint(ImageBuffer& image, const Rect& rect, const Color& color) {
        const auto clamped = [](double value, int limit) {
            return std::clamp(static_cast<int>(std::lround(value)), 0, limit);
        };
        const double source[] = {color.red * color.alpha, color.green * color.alpha,
                                 color.blue * color.alpha, color.alpha};
        for (int y = clamped(rect.y, image.height); y < clamped(rect.bottom(), image.height); ++y)
            for (int x = clamped(rect.x, image.width); x < clamped(rect.right(), image.width); ++x)
                for (int channel = 0; channel < 4; ++channel) {
                    auto& value = image.row(y)[x * 4 + channel];
                    value = static_cast<std::uint8_t>(
                        std::lround(source[channel] * 255 + value * (1 - color.alpha)));
                }
    }

    mutable std::mutex mutex_;
    mutable std::vector<DisplayList> lists_;
};

// An artificial lossless format: a mark, the size, the pixels.
class FakeImageCodec final : public ImageCodec {
  public:
    Result<ImageBuffer> decode(BytesView file) const override {
        std::int32_t size[2];
        if (file.size() < markSize + sizeof size || std::memcmp(file.data(), mark, markSize) != 0)
            return Error{"image", 1, "not an image"};
        std::memcpy(size, file.data() + markSize, sizeof size);
        ImageBuffer image(size[0], size[1]);
        if (file.size() != markSize + sizeof size + image.pixels.size())
            return Error{"image", 1, "not an image"};
        std::copy(file.begin() + markSize + sizeof size, file.end(), image.pixels.begin());
        return image;
    }
    Result<Bytes> encodePng(const ImageBuffer& image) const override { return encode(image); }
    Result<Bytes> encodeJpeg(const ImageBuffer& image, int) const override { return encode(image); }

  private:
    static constexpr char mark[] = "PICT";
    static constexpr std::size_t markSize = 4;

    static Result<Bytes> encode(const ImageBuffer& image) {
        if (image.empty())
            return Error{"image", 2, "the image is empty"};
        const std::int32_t size[] = {image.width, image.height};
        Bytes file(markSize + sizeof size);
        std::memcpy(file.data(), mark, markSize);
        std::memcpy(file.data() + markSize, size, sizeof size);
        file.insert(file.end(), image.pixels.begin(), image.pixels.end());
        return file;
    }
};

}  // namespace tembrix
