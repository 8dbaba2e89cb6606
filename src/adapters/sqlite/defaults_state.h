#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"

#include "ports/user_defaults.h"

#include "adapters/sqlite/checkpointer.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

// The values of the user defaults: those in the database, and changes kept in memory because the
// database refused them. Thread-safe.
class DefaultsState {
  public:
    DefaultsState(std::filesystem::path file, Log& log,
                  std::vector<std::filesystem::path> recoveryFolders);

    std::optional<StoredValue> read(std::string_view key) const;
    std::vector<std::string> keys(std::string_view prefix) const;
    bool change(std::string_view key, PendingChange change);  // returns false if it was refused
    std::uint64_t number(std::string_view key) const;

    std::string identity() const;
    void continueNumbers(std::string_view identity, std::uint64_t last);
    bool isDurable() const;
    DefaultsStatus status() const;

    // Tries to store pending changes, writes the remaining ones to a recovery file, and syncs the
    // disk. Returns true if changes are still pending.
    bool upkeep();
    void finish() { upkeep(); }

  private:
    int openFile(std::string& reason) const;
    void open(bool mayReplace) const;
    void openInMemory(int code, const std::string& reason) const;
    void replaceDamaged(int code, const std::string& reason) const;
    int adoptIdentity(ValueStore& store) const;
    int attempt(const std::function<int(ValueStore&)>& operation) const;
    void tendLog() const;
    void storePending();
    void refused(int code) const;

    void takeInRecoveryFiles();
    void writeRecoveryFile(const PendingChanges& changes);
    void removeRecoveryFiles();
    std::filesystem::path recoveryFile(const std::filesystem::path& folder) const;

    const std::filesystem::path file_;
    Log& log_;
    std::vector<std::filesystem::path> folders_;

    mutable std::mutex mutex_;
    mutable std::unique_ptr<ValueStore> store_;  // a read may detect damage and replace the store
    mutable std::unique_ptr<Checkpointer> checkpointer_;  // null without a file
    mutable int logPages_ = 0;  // pages in the log after the last write; 0 if there was none
    PendingChanges pending_;
    mutable int refusal_ = SQLITE_OK;  // the error code of the last refused change
    mutable std::string identity_;
    mutable bool identityIsOurs_ = false;  // created by this run and not stored yet
    mutable std::uint64_t lastNumber_ = 0;

    std::mutex upkeep_;            // guards the members below; locked before the other mutex
    std::uint64_t recovered_ = 0;  // the number of the last change in the recovery file
    bool mayHaveRecoveryFiles_ = false;
};

}  // namespace tembrix::sqlite
