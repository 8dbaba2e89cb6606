#pragma once

#include <filesystem>
#include <stop_token>
#include <vector>

#include "base/result.h"

#include "ports/process_runner.h"
#include "ports/texts.h"

namespace tembrix {

// Packs files into a zip archive without their folders. An existing archive is replaced. If packing
// fails or is stopped, no archive is left. Blocks; call it in the background.
Result<std::filesystem::path> packArchive(const std::filesystem::path& archive,
                                          const std::vector<std::filesystem::path>& files,
                                          ProcessRunner& processes, const Texts& texts,
                                          std::stop_token stop);

}  // namespace tembrix
