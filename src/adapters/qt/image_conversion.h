#pragma once

#include <QImage>

#include "base/image.h"

namespace tembrix {

// An image that shares the pixels of the buffer. The buffer must outlive it.
QImage viewOf(const ImageBuffer& image);

ImageBuffer toBuffer(const QImage& image);

}  // namespace tembrix
