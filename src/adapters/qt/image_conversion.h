#pragma once

#include <QImage>

#include "base/image.h"

namespace tembrix {

// A view on the buffer's own pixels; the buffer must outlive it.
QImage viewOf(const ImageBuffer& image);

ImageBuffer toBuffer(const QImage& image);

}  // namespace tembrix
