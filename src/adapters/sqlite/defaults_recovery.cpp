// Writes changes that the database refused to recovery files, and reads these at the next start.

#include <algorithm>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/bytes.h"
#include "base/files.h"

#include "adapters/sqlite/defaults_state.h"
#include "adapters/sqlite/recovery_file.h"
#include "adapters/sqlite/salvage.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

namespace {

constexpr const char* recoveryName = "unsaved-values.recovery";

// Other users may write to folders such as that of temporary files.
bool isOurs(const std::filesystem::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == ::geteuid();
}

}  // namespace

std::filesystem::path DefaultsState::recoveryFile(const std::filesystem::path& folder) const {
    return folder / recoveryName;
}

void DefaultsState::takeInRecoveryFiles() {
    for (const auto& folder : folders_) {
        const auto file = recoveryFile(folder);
        if (!isOurs(file))
            continue;
        const auto bytes = readFile(file);
        auto recovery = bytes ? decodeRecovery(*bytes) : std::nullopt;
        if (!recovery) {
            if (bytes)
                moveAside(file);
            incidents_.recoveryFileDamaged = true;
            log_.line("❌ UserDefaults: Unreadable recovery file in " + pathText(folder));
            continue;
        }
        mayHaveRecoveryFiles_ = true;
        if (identityIsOurs_) {
            identity_ = recovery->identity;
            identityIsOurs_ = false;
        }
        for (auto& [key, change] : recovery->changes) {
            std::uint64_t stored = 0;
            store_->number(key, stored);
            if (recovery->identity == identity_ && change.number <= stored)
                continue;  // stored in the meantime
            if (recovery->identity != identity_)
                change.base = 0;  // a number of another store
            lastNumber_ = std::max(lastNumber_, change.number);
            const auto known = pending_.find(key);
            if (known == pending_.end() || known->second.number < change.number)
                pending_.insert_or_assign(key, std::move(change));
        }
    }
    if (pending_.empty())
        return;
    log_.line("⚠️ UserDefaults: " + std::to_string(pending_.size()) +
              " values taken over from recovery files");
    upkeep();
}

bool DefaultsState::writeRecoveryFile(const PendingChanges& changes, bool logged) {
    const Bytes content = encodeRecovery({identity(), changes});
    mayHaveRecoveryFiles_ = true;
    std::filesystem::path written;
    for (const auto& folder : folders_) {
        if (written.empty() && makeFolder(folder) && replaceFile(recoveryFile(folder), content)) {
            written = folder;
        } else if (!written.empty() && folder != written && isOurs(recoveryFile(folder))) {
            // An older file, from a time when the preceding folders were not writable.
            std::error_code ignored;
            std::filesystem::remove(recoveryFile(folder), ignored);
        }
    }
    if (!written.empty())
        log_.line("⚠️ UserDefaults: Unsaved values written to " + pathText(written));
    else if (logged)
        log_.line("❌ UserDefaults: No folder accepts the recovery file");
    return !written.empty();
}

void DefaultsState::removeRecoveryFiles() {
    mayHaveRecoveryFiles_ = false;
    for (const auto& folder : folders_) {
        std::error_code ignored;
        if (isOurs(recoveryFile(folder)))
            std::filesystem::remove(recoveryFile(folder), ignored);
    }
}

}  // namespace tembrix::sqlite
