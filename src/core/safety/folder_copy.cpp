#include "core/safety/folder_copy.h"

#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "base/files.h"

namespace tembrix {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view replacedSuffix = ".replaced";
constexpr std::string_view incomingSuffix = ".incoming";

Error fileError(const std::error_code& code) {
    return Error{"file", code.value(), code.message()};
}

fs::path beside(const fs::path& target, std::string_view suffix) {
    fs::path place = target;
    place += suffix;
    return place;
}

fs::path replacedPlace(const fs::path& target) {
    return beside(target, replacedSuffix);
}

// Moves old content to the place where it is kept, or removes it if there is none. If that fails,
// the next launch tries again.
void putAway(const fs::path& old, const fs::path& kept) {
    std::error_code failure;
    if (kept.empty()) {
        fs::remove_all(old, failure);
        return;
    }
    fs::path place = kept;
    for (int number = 2; isThere(place); ++number)
        place = beside(kept, " (" + std::to_string(number) + ")");
    fs::create_directories(place.parent_path(), failure);
    fs::rename(old, place, failure);
}

// Copies content without permissions, because a copy that cannot be written or listed could not be
// used or removed. Links to folders are left out, because they may be circular.
std::error_code copyTree(const fs::path& source, const fs::path& target) {
    std::error_code failure;
    if (!fs::is_directory(source, failure)) {
        fs::copy_file(source, target, failure);
        if (!failure)
            fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write,
                            fs::perm_options::add, failure);
        return failure;
    }
    fs::create_directory(target, failure);
    for (fs::directory_iterator entry(source, failure), end; !failure && entry != end;) {
        const bool folder = entry->is_directory(failure) && !entry->is_symlink(failure);
        if (folder || entry->is_regular_file(failure))
            failure = copyTree(entry->path(), target / entry->path().filename());
        if (!failure)
            entry.increment(failure);
    }
    return failure;
}

}  // namespace

bool isThere(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

bool holdsSomething(const fs::path& path) {
    std::error_code ignored;
    if (!fs::is_directory(path, ignored))
        return isThere(path);
    const fs::directory_iterator first(path, ignored);
    return ignored || first != fs::directory_iterator();
}

bool hasEqualContent(const fs::path& one, const fs::path& other) {
    std::error_code failure;
    if (!fs::is_directory(one, failure)) {
        const auto content = readFile(one);
        return content && !fs::is_directory(other, failure) &&
               content.value() == readFile(other).optional();
    }
    std::set<fs::path> names;
    for (fs::directory_iterator entry(one, failure), end; !failure && entry != end;
         entry.increment(failure))
        names.insert(entry->path().filename());
    for (fs::directory_iterator entry(other, failure), end; !failure && entry != end;
         entry.increment(failure))
        if (names.erase(entry->path().filename()) == 0 ||
            !hasEqualContent(one / entry->path().filename(), entry->path()))
            return false;
    return !failure && names.empty();
}

fs::path stagingPlace(const fs::path& target) {
    return beside(target, incomingSuffix);
}

void finishReplacing(const fs::path& target, const fs::path& kept) {
    std::error_code ignored;
    const fs::path old = replacedPlace(target);
    if (isThere(old) && !isThere(target))
        fs::rename(old, target, ignored);
    if (isThere(old))
        putAway(old, kept);
    fs::remove_all(stagingPlace(target), ignored);
}

void finishReplacingIn(const fs::path& folder, const KeptPlace& kept) {
    std::error_code failure;
    std::set<fs::path> targets;
    for (auto entry = fs::directory_iterator(folder, failure);
         !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string place = entry->path().string();
        for (const auto suffix : {replacedSuffix, incomingSuffix})
            if (place.ends_with(suffix))
                targets.insert(place.substr(0, place.size() - suffix.size()));
    }
    for (const auto& target : targets) {
        const bool wasReplaced = isThere(target) && isThere(replacedPlace(target));
        finishReplacing(target, wasReplaced && kept ? kept(target) : fs::path());
    }
}

Result<void> moveIntoPlace(const fs::path& finished, const fs::path& target, const fs::path& kept) {
    std::error_code failure;
    const fs::path old = replacedPlace(target);
    if (isThere(old))
        putAway(old, kept);
    if (isThere(target))
        fs::rename(target, old, failure);
    if (!failure)
        fs::rename(finished, target, failure);
    if (failure) {
        finishReplacing(target, kept);
        return fileError(failure);
    }
    putAway(old, isThere(old) && hasEqualContent(old, target) ? fs::path() : kept);
    return {};
}

Result<void> copyInto(const fs::path& source, const fs::path& place) {
    const auto failure = copyTree(source, place);
    return failure ? Result<void>(fileError(failure)) : Result<void>();
}

Result<void> replaceByCopy(const fs::path& source, const fs::path& target, CopyOf kind,
                           const fs::path& kept) {
    finishReplacing(target, kept);
    std::error_code failure;
    if (fs::is_directory(source, failure) != (kind == CopyOf::folder))
        return fileError(std::make_error_code(kind == CopyOf::folder ? std::errc::not_a_directory
                                                                     : std::errc::is_a_directory));
    fs::create_directories(target.parent_path(), failure);
    const fs::path staging = stagingPlace(target);
    failure = copyTree(source, staging);
    const auto whole = failure ? Result<void>(fileError(failure)) : syncTree(staging);
    if (!whole) {
        fs::remove_all(staging, failure);
        return whole;
    }
    return moveIntoPlace(staging, target, kept);
}

}  // namespace tembrix
