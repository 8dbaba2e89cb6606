#include "core/safety/unfinished_restore.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "base/bytes.h"
#include "base/files.h"

namespace tembrix {

// The file has two lines: the source, which may be empty, and the name of the state to be kept.
Result<void> UnfinishedRestore::begin(const Restore& restore) const {
    const auto folder = makeFolder(file_.parent_path());
    return folder ? replaceFile(file_, toBytes(restore.source + "\n" + restore.kept + "\n"))
                  : folder;
}

void UnfinishedRestore::end() const {
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

std::optional<UnfinishedRestore::Restore> UnfinishedRestore::find() const {
    const auto content = readFile(file_);
    if (!content)
        return std::nullopt;
    const std::string_view text = asText(*content);
    const auto first = std::min(text.find('\n'), text.size());
    const auto rest = text.substr(std::min(first + 1, text.size()));
    Restore restore{std::string(text.substr(0, first)),
                    std::string(rest.substr(0, rest.find('\n')))};
    if (!isFileName(restore.kept) || (!restore.source.empty() && !isFileName(restore.source)))
        return std::nullopt;
    return restore;
}

}  // namespace tembrix
