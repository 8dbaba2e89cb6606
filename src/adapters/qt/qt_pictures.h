#pragma once

#include <QStringList>
#include <utility>

#include "base/geometry.h"
#include "base/image.h"

#include "ports/images.h"

namespace tembrix {

// Text measure and picture renderer share one layout, so that the measured size is the painted
// size. `families` are the font families of the program, best first.
class QtTextMeasure final : public TextMeasure {
  public:
    explicit QtTextMeasure(QStringList families) : families_(std::move(families)) {}
    Size boundingSize(const RichText& text, double width) const override;

  private:
    QStringList families_;
};

class QtPictureRenderer final : public PictureRenderer {
  public:
    explicit QtPictureRenderer(QStringList families) : families_(std::move(families)) {}
    ImageBuffer render(const DisplayList& list) const override;

  private:
    QStringList families_;
};

}  // namespace tembrix
