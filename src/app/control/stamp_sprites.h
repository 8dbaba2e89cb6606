#pragma once

#include <QPixmap>
#include <cstdint>
#include <string>
#include <unordered_map>

class QPainter;

namespace tembrix {

// How one stamp looks, whatever its place: what a sprite is kept by.
struct StampLook {
    std::uint32_t color = 0;   // RGB of the data
    int width = 0;             // device pixels
    int top = 0;               // half points below the row's top
    int height = 0;            // half points
    bool overlapping = false;  // framed as standing on another
    bool selected = false;
    bool operator==(const StampLook&) const = default;
};

// Ready pictures of stamps. Ten thousand stamps share a few hundred looks, so that a row is painted
// by copying. Each picture is as high as a row; what exceeds the memory set aside is forgotten at
// once.
class StampSprites {
  public:
    static constexpr int margin = 8;  // points left and right of the stamp, for its shadow

    const QPixmap& sprite(const StampLook& look, double pixelRatio);
    // A sprite as wide as a screen is not worth keeping: such a stamp is painted directly.
    static bool isKept(const StampLook& look) { return look.width <= 512; }

    // The color of a stamp's hex text.
    std::uint32_t color(const std::string& hex);

    // The stamp's left edge at x = 0 and the row's top at y = 0 of the painter.
    static void paint(QPainter& painter, const StampLook& look, double pixelRatio);

  private:
    struct Hash {
        std::size_t operator()(const StampLook& look) const noexcept;
    };

    std::unordered_map<StampLook, QPixmap, Hash> sprites_;
    std::unordered_map<std::string, std::uint32_t> colors_;
    double pixelRatio_ = 0;
    std::size_t pixels_ = 0;
};

}  // namespace tembrix
