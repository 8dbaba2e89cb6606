#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <vector>

#include "base/result.h"

#include "core/export/export_drawings.h"
#include "core/export/export_services.h"

namespace tembrix {

// Packs the pictures of drawings into an archive. Missing pictures are logged and left out.
// Pictures get portable names in the archive. `folder` is the folder of the run. Blocks; call it in
// the background.
Result<std::filesystem::path> packDrawings(
    const std::vector<ExportDrawing>& drawings,
    const std::optional<std::filesystem::path>& drawingsFolder, const std::filesystem::path& folder,
    const std::string& archiveName, const ExportServices& services, std::stop_token stop);

}  // namespace tembrix
