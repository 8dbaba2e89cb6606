#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <vector>

#include "base/result.h"

#include "core/export/export_drawings.h"
#include "core/export/export_services.h"

namespace tembrix {

// Packs the pictures of drawings into an archive. Pictures that are missing are left out with a log
// line. A picture whose name some file system refuses gets another one in the archive. `folder` is
// the run's. Blocks; from a background thread.
Result<std::filesystem::path> packDrawings(
    const std::vector<ExportDrawing>& drawings,
    const std::optional<std::filesystem::path>& drawingsFolder, const std::filesystem::path& folder,
    const std::string& archiveName, const ExportServices& services, std::stop_token stop);

}  // namespace tembrix
