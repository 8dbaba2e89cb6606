#pragma once

#include <QStringList>
#include <QTextLayout>
#include <memory>

#include "base/geometry.h"

#include "ports/images.h"

class QPainter;

namespace tembrix {

// Lays out rich text for measuring and for painting. May be used on any thread.
class RichTextLayout {
  public:
    // `families` are the font families of the program, best first. `width` is in pixels.
    RichTextLayout(const RichText& text, double width, const QStringList& families);

    Size size() const;  // pixels

    // Paints whole lines into the rectangle, which has the width of the layout; at least one line.
    // If not all lines fit, the last one is elided.
    void paint(QPainter& painter, const Rect& rect);

  private:
    void layOut(const QString& text);
    double heightOf(int lines) const;  // in layout units
    void truncate(int lines);

    // The layout uses whole font sizes; `scale_` converts to the requested size.
    double scale_;
    double width_;
    QList<QTextLayout::FormatRange> formats_;
    std::unique_ptr<QTextLayout> layout_;
};

}  // namespace tembrix
