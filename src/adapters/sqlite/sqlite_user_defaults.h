#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>

#include "base/bytes.h"
#include "base/date.h"
#include "base/log.h"

#include "ports/user_defaults.h"

namespace tembrix {

// User defaults in one SQLite file, one row per key. A written value stands in the operating
// system's hands when the call returns, so a killed process loses nothing; a power cut can take the
// last values but leaves the database whole.
//
// It always opens. A damaged file is set aside under a new name, whatever can still be read in it
// goes into a fresh one, and work goes on there; the same happens when damage shows up later. Where
// no file can be written the values of a readable one are taken over and live in memory.
class SqliteUserDefaults final : public UserDefaults {
  public:
    // Makes the file's folder if it is missing.
    SqliteUserDefaults(std::filesystem::path file, Log& log);
    ~SqliteUserDefaults() override;

    // False while values live in memory only.
    bool isDurable() const;

    std::optional<Bytes> data(std::string_view key) const override;
    std::optional<std::string> text(std::string_view key) const override;
    std::optional<Date> date(std::string_view key) const override;
    bool boolean(std::string_view key) const override;

    void setData(std::string_view key, BytesView value) override;
    void setText(std::string_view key, std::string_view value) override;
    void setDate(std::string_view key, Date value) override;
    void setBoolean(std::string_view key, bool value) override;
    void remove(std::string_view key) override;

    std::vector<std::string> keys(std::string_view prefix) const override;

  private:
    struct Store;

    void open(bool mayReplace) const;
    void openInMemory(const std::string& reason) const;
    void replaceDamaged(const std::string& reason) const;
    // Runs an operation that ends with a SQLite code. On damage the file is replaced and the
    // operation runs once more.
    void perform(const std::function<int(Store&)>& operation) const;

    const std::filesystem::path file_;
    Log& log_;
    mutable std::mutex mutex_;
    mutable std::unique_ptr<Store> store_;  // a read may find the damage that replaces it
};

}  // namespace tembrix
