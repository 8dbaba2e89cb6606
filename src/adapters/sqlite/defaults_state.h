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

// The values behind the user defaults: those in the database and those that wait in memory because
// the database refused them. Safe for concurrent use.
class DefaultsState {
  public:
    DefaultsState(std::filesystem::path file, Log& log,
                  std::vector<std::filesystem::path> recoveryFolders);

    std::optional<StoredValue> read(std::string_view key) const;
    std::vector<std::string> keys(std::string_view prefix) const;
    bool change(std::string_view key, PendingChange change);  // false if it was refused
    std::uint64_t number(std::string_view key) const;

    std::string identity() const;
    void continueNumbers(std::string_view identity, std::uint64_t last);
    bool isDurable() const;
    DefaultsStatus status() const;

    // Tries to store what waits, writes the rest to a recovery file, and syncs the disk. True if
    // something still waits.
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
    mutable std::unique_ptr<ValueStore> store_;  // a read may find the damage that replaces it
    mutable std::unique_ptr<Checkpointer> checkpointer_;  // null while there is no file
    mutable int logPages_ = 0;  // in the log after the last write; 0 if there was none
    PendingChanges pending_;
    mutable int refusal_ = SQLITE_OK;  // the code with which the last change was refused
    mutable std::string identity_;
    mutable bool identityIsOurs_ = false;  // made by this run and not stored yet
    mutable std::uint64_t lastNumber_ = 0;

    std::mutex upkeep_;            // guards what follows; locked before the other mutex
    std::uint64_t recovered_ = 0;  // the last change in the recovery file
    bool mayHaveRecoveryFiles_ = false;
};

}  // namespace tembrix::sqlite
