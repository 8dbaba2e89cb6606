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

#include "base/bytes.h"
#include "base/date.h"
#include "base/log.h"

#include "ports/user_defaults.h"

namespace tembrix {

namespace sqlite {
class DelayedWorker;
class ValueStore;
struct PendingChange;
}  // namespace sqlite

// User defaults in one SQLite file, with one row per key; large values are split into pieces. When
// a call returns, the operating system has received the value, so that a killed process loses
// nothing. It is synced to the disk within a second, so that a power failure loses at most that.
//
// The defaults can always be opened. A damaged file is renamed, its readable values are copied into
// a new file, and work continues there; the same happens if damage is found later. Values that the
// file refuses are kept in memory and in a recovery file, in the first of the recovery folders that
// accepts it, until they can be stored. The next start stores the values of recovery files before
// anything is read.
class SqliteUserDefaults final : public UserDefaults {
  public:
    // Creates the folder of the file if it is missing. Recovery files are written to the folder of
    // the file or, if that fails, to the other folders in their order.
    SqliteUserDefaults(std::filesystem::path file, Log& log,
                       std::vector<std::filesystem::path> recoveryFolders = {});
    ~SqliteUserDefaults() override;

    // Returns false while the database file cannot be used.
    bool isDurable() const;

    std::optional<Bytes> data(std::string_view key) const override;
    std::optional<std::string> text(std::string_view key) const override;
    std::optional<Date> date(std::string_view key) const override;
    bool boolean(std::string_view key) const override;

    void setData(std::string_view key, BytesView value) override;
    void setPieces(std::string_view key, const ValuePieces& pieces) override;
    void setText(std::string_view key, std::string_view value) override;
    void setDate(std::string_view key, Date value) override;
    void setBoolean(std::string_view key, bool value) override;
    void remove(std::string_view key) override;

    std::vector<std::string> keys(std::string_view prefix) const override;

    std::uint64_t changeNumber(std::string_view key) const override;
    std::string identity() const override;
    void continueNumbers(std::string_view identity, std::uint64_t last) override;

    void makeDurable() override;
    DefaultsStatus status() const override;
    void setStatusChanged(std::function<void()> changed) override;

  private:
    struct State;

    void change(std::string_view key, sqlite::PendingChange change);
    bool upkeep();  // called on the worker's thread; returns true if something is still pending
    void announce();

    std::unique_ptr<State> state_;
    std::mutex announcing_;
    DefaultsStatus announced_;
    std::function<void()> statusChanged_;
    std::unique_ptr<sqlite::DelayedWorker> worker_;
};

}  // namespace tembrix
