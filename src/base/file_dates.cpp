#include "base/file_dates.h"

#include <sys/stat.h>

namespace tembrix {

std::optional<Date> lastAccessDate(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return std::nullopt;
    return Date{static_cast<double>(status.st_atim.tv_sec) +
                static_cast<double>(status.st_atim.tv_nsec) * 1e-9};
}

}  // namespace tembrix
