#include "core/export/archive.h"

#include <utility>

#include "base/files.h"
#include "base/utf8_text.h"

#include "core/export/archive_names.h"

namespace tembrix {

Result<std::filesystem::path> packArchive(const std::filesystem::path& archive,
                                          const std::vector<std::filesystem::path>& files,
                                          ProcessRunner& processes, const Texts& texts,
                                          std::stop_token stop) {
    std::error_code ignored;
    std::filesystem::remove(archive, ignored);  // the zip program would add to an existing archive
    std::vector<std::string> arguments{"-j", archive.string()};
    for (const auto& file : files)
        arguments.push_back(file.string());
    const auto outcome = processes.run("/usr/bin/zip", arguments, std::move(stop));
    if (outcome && outcome->exitStatus == 0) {
        markArchiveNamesAsUtf8(archive);
        return archive;
    }
    std::filesystem::remove(archive, ignored);
    if (!outcome)
        return outcome.error();
    const bool readable =
        !trimmed(outcome->output).empty() && sanitizedUtf8(outcome->output) == outcome->output;
    return Error{"ZIPError", outcome->exitStatus,
                 readable ? outcome->output : texts.text("unknownError")};
}

}  // namespace tembrix
