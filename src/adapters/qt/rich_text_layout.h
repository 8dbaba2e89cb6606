#pragma once

#include <QStringList>
#include <QTextLayout>
#include <memory>

#include "base/geometry.h"

#include "ports/images.h"

class QPainter;

namespace tembrix {

// Lays rich text out for measuring and for painting, so that both agree. Any thread.
class RichTextLayout {
  public:
    // `families`: the program's font, best first. Width in pixels.
    RichTextLayout(const RichText& text, double width, const QStringList& families);

    Size size() const;  // pixels

    // Paints into the rectangle of this layout's width: whole lines only, at least one; where not
    // all of them fit, the last one ends in an ellipsis.
    void paint(QPainter& painter, const Rect& rect);

  private:
    void layOut(const QString& text);
    double heightOf(int lines) const;  // in the layout's own units
    void truncate(int lines);

    // Fonts have whole sizes here; `scale_` brings them to the size asked for.
    double scale_;
    double width_;
    QList<QTextLayout::FormatRange> formats_;
    std::unique_ptr<QTextLayout> layout_;
};

}  // namespace tembrix
