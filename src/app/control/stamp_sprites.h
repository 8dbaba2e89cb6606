#pragma once

#include <QPixmap>
#include <cstdint>
#include <string>
#include <unordered_map>

class QPainter;

namespace tembrix {

// How one stamp looks, independent of its position. The key under which its sprite is cached.
struct StampLook {
    std::uint32_t color = 0;   // RGB of the data
    int width = 0;             // device pixels
    int top = 0;               // half points below the row's top
    int height = 0;            // half points
    bool overlapping = false;  // overlaps another stamp, shown by a frame
    bool selected = false;
    bool operator==(const StampLook&) const = default;
};

// Cached pictures of stamps. Ten thousand stamps share a few hundred looks, so that a row is
// painted by copying pictures. Each picture is as high as a row. The cache is emptied when it
// exceeds its memory limit.
class StampSprites {
  public:
    static constexpr int margin = 8;  // points left and right of the stamp, for its shadow

    const QPixmap& sprite(const StampLook& look, double pixelRatio);
    // A stamp as wide as a screen is not cached but painted directly.
    static bool isKept(const StampLook& look) { return look.width <= 512; }

    // Parses the hex color of a stamp.
    std::uint32_t color(const std::string& hex);

    // Paints the stamp with its left edge at x = 0 and the top of its row at y = 0.
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
