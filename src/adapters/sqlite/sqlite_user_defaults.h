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

// User defaults in one SQLite file, one row per key; a large value is split into pieces. A stored
// value is in the operating system's hands when the call returns, so a killed process loses
// nothing; it is on the disk within a second, so that a power cut loses no more than that.
//
// It always opens. A damaged file is set aside under a new name, whatever can still be read in it
// is copied into a fresh one, and work continues there; the same happens when damage is found
// later. Values that the file refuses are kept in memory and in a recovery file in the first of the
// recovery folders that accepts it, until they can be stored. The next start stores what it finds
// in recovery files before anything is read.
class SqliteUserDefaults final : public UserDefaults {
  public:
    // Makes the file's folder if it is missing. Recovery files are written to the folder of the
    // file first, and then to the others in their order.
    SqliteUserDefaults(std::filesystem::path file, Log& log,
                       std::vector<std::filesystem::path> recoveryFolders = {});
    ~SqliteUserDefaults() override;

    // False while there is no database file to work in.
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
    bool upkeep();  // on the worker's thread; true if something is still to be done
    void announce();

    std::unique_ptr<State> state_;
    std::mutex announcing_;
    DefaultsStatus announced_;
    std::function<void()> statusChanged_;
    std::unique_ptr<sqlite::DelayedWorker> worker_;
};

}  // namespace tembrix
