#include "core/export/drawings_archive.h"

#include <system_error>
#include <utility>

#include "base/files.h"

#include "core/export/archive.h"
#include "core/export/export_errors.h"
#include "core/export/file_names.h"

namespace tembrix {

namespace fs = std::filesystem;

Result<fs::path> packDrawings(const std::vector<ExportDrawing>& drawings,
                              const std::optional<fs::path>& drawingsFolder, const fs::path& folder,
                              const std::string& archiveName, const ExportServices& services,
                              std::stop_token stop) {
    if (drawings.empty())
        return plainError("Нет скриншотов для экспорта");
    if (!drawingsFolder)
        return plainError("Не найдены файлы проекта");
    std::vector<fs::path> files;
    DistinctFileNames names;
    const auto renamed = folder / "renamed";
    for (const auto& drawing : drawings) {
        auto file = *drawingsFolder / pathFromText(drawing.fileName());
        std::error_code failure;
        if (!fs::exists(file, failure)) {
            services.log.line("Screenshot not found: " + drawing.screenshotName);
            continue;
        }
        // The zip program names an entry after its file, so a link with another name is packed.
        const auto name = names.add(portableFileName(pathText(file.filename())));
        if (name != pathText(file.filename())) {
            const auto link = renamed / pathFromText(name);
            if (const auto made = makeFolder(renamed); !made)
                return made.error();
            fs::create_symlink(fs::absolute(file, failure), link, failure);
            if (failure)
                return Error{"file", failure.value(), pathText(link) + ": " + failure.message()};
            file = link;
        }
        files.push_back(std::move(file));
    }
    if (files.empty())
        return plainError("Не найдены файлы скриншотов");
    return packArchive(folder / archiveName, files, services.processes, services.texts,
                       std::move(stop));
}

}  // namespace tembrix
