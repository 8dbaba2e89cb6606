#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/image.h"
#include "base/result.h"
#include "base/uuid.h"

namespace tembrix {

// The data of one drawing that exports use.
struct ExportDrawing {
    std::string screenshotName;  // may end in ".png"
    double videoTime = 0;        // seconds
    double displayDuration = 3;  // seconds of its freeze frame in a film
    std::vector<Uuid> relatedStampIds;

    std::string fileName() const {
        return screenshotName.ends_with(".png") ? screenshotName : screenshotName + ".png";
    }
};

// The drawings of the open video, for exports.
class ExportDrawings {
  public:
    virtual ~ExportDrawings() = default;
    virtual std::vector<ExportDrawing> screenshots() const = 0;  // main thread
    // The folder of the pictures. Absent if the open video is not in the library. Main thread.
    virtual std::optional<std::filesystem::path> folder() const = 0;
    virtual Result<ImageBuffer> picture(const std::filesystem::path& file) const = 0;  // any thread
};

}  // namespace tembrix
