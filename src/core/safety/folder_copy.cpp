#include "core/safety/folder_copy.h"

#include <string>
#include <system_error>

namespace tembrix {

namespace fs = std::filesystem;

namespace {

Error fileError(const std::error_code& code) {
    return Error{"file", code.value(), code.message()};
}

fs::path beside(const fs::path& target, const char* suffix) {
    fs::path place = target;
    place += suffix;
    return place;
}

fs::path replacedPlace(const fs::path& target) {
    return beside(target, ".replaced");
}

}  // namespace

bool isThere(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

fs::path stagingPlace(const fs::path& target) {
    return beside(target, ".incoming");
}

void finishReplacing(const fs::path& target) {
    std::error_code ignored;
    const fs::path old = replacedPlace(target);
    if (isThere(old) && !isThere(target))
        fs::rename(old, target, ignored);
    fs::remove_all(old, ignored);
    fs::remove_all(stagingPlace(target), ignored);
}

Result<void> moveIntoPlace(const fs::path& finished, const fs::path& target) {
    std::error_code failure;
    const fs::path old = replacedPlace(target);
    fs::remove_all(old, failure);
    if (isThere(target))
        fs::rename(target, old, failure);
    if (!failure)
        fs::rename(finished, target, failure);
    if (failure) {
        finishReplacing(target);
        return fileError(failure);
    }
    fs::remove_all(old, failure);
    return {};
}

Result<void> replaceByCopy(const fs::path& source, const fs::path& target) {
    finishReplacing(target);
    std::error_code failure;
    fs::create_directories(target.parent_path(), failure);
    const fs::path staging = stagingPlace(target);
    fs::copy(source, staging, fs::copy_options::recursive, failure);
    if (failure) {
        std::error_code ignored;
        fs::remove_all(staging, ignored);
        return fileError(failure);
    }
    return moveIntoPlace(staging, target);
}

}  // namespace tembrix
