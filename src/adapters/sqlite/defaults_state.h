#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
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
    DefaultsState(const std::filesystem::path& file, Log& log,
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
    // Opens the file or, if it cannot be written, a store in memory. `damage` is the code of damage
    // that was found while it was in use.
    void open(int damage = SQLITE_OK) const;
    int openFile(std::string& reason) const;
    int openOrReplace(std::string& reason, int damage = SQLITE_OK) const;
    int salvageFile(const std::string& reason) const;
    bool useSalvaged() const;
    void openInMemory(int code, const std::string& reason) const;
    int adoptIdentity(ValueStore& store) const;
    int attempt(const std::function<int(ValueStore&)>& operation) const;
    void tendLog() const;
    void repair(std::string_view key, PendingChange change);
    void adoptRepairs();
    void noteUnknown(ValueStore& memory);
    std::uint64_t storedNumber(std::string_view key) const;
    void storePending();
    int keepUnknown(ValueStore& store, const std::string& key, const PendingChange& change);
    void refused(int code) const;

    void takeInRecoveryFiles();
    bool writeRecoveryFile(const PendingChanges& changes, bool logged);
    void removeRecoveryFiles();
    std::filesystem::path recoveryFile(const std::filesystem::path& folder) const;

    // If the log could not be read, it may have contained higher change numbers than the database.
    static constexpr std::uint64_t unreadNumbers = std::uint64_t{1} << 32;

    const std::filesystem::path file_;  // not a link to it: its log and copies are beside it
    Log& log_;
    std::vector<std::filesystem::path> folders_;

    mutable std::mutex mutex_;
    mutable std::unique_ptr<ValueStore> store_;  // a read may detect damage and replace the store
    mutable std::unique_ptr<Checkpointer> checkpointer_;  // null without a file
    mutable int logPages_ = 0;  // pages in the log after the last write; 0 if there was none
    PendingChanges pending_;
    PendingChanges repairs_;  // in the store in memory, while there is no file
    // The keys whose values in the file the program may not have seen, because the file was out of
    // reach, with the numbers of the values that it has seen. Until the first change of each.
    std::map<std::string, std::uint64_t, std::less<>> unknown_;
    std::uint64_t changes_ = 0;        // counts changes
    std::uint64_t synced_ = 0;         // of which the disk has so many
    mutable int refusal_ = SQLITE_OK;  // the error code of the last refused change
    mutable std::string identity_;
    mutable bool identityIsOurs_ = false;  // created by this run and not stored yet
    mutable std::uint64_t lastNumber_ = 0;
    mutable DefaultsIncidents incidents_;
    mutable int salvageCode_ = SQLITE_OK;  // of the last attempt to salvage the file
    mutable std::chrono::steady_clock::time_point salvageAgain_;  // not tried again before

    std::mutex upkeep_;                 // guards the members below; locked before the other mutex
    std::uint64_t recovered_ = 0;       // the number of the last change in the recovery file
    std::uint64_t triedToRecover_ = 0;  // the same at the last attempt to write it
    bool mayHaveRecoveryFiles_ = false;
};

}  // namespace tembrix::sqlite
