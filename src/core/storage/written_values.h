#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

namespace tembrix {

// Which change of each value the files in Documents contain. Stored in a separate file, because the
// format of the documents is fixed. The numbers belong to one store of defaults; for any other
// store the list is empty.
class WrittenValues {
  public:
    struct Entry {
        std::uint64_t number = 0;  // of the change
        std::uint64_t hash = 0;    // of the value; 0 if it is not to be written
        bool operator==(const Entry&) const = default;
    };
    using Entries = std::map<std::string, Entry, std::less<>>;

    explicit WrittenValues(std::filesystem::path file);

    // The store to which the file belongs, and its highest change number; 0 if that is not sure.
    const std::string& storedIdentity() const { return identity_; }
    std::uint64_t lastNumber() const;

    // Removes all entries if they belong to another store.
    void useFor(const std::string& identity);
    std::optional<Entry> find(std::string_view key) const;
    void set(const std::string& key, Entry entry);
    void clear();
    const Entries& entries() const { return entries_; }
    // Writes the file if the list has changed.
    Result<void> save();

  private:
    const std::filesystem::path file_;
    std::string identity_;
    Entries entries_;
    bool checked_ = false;  // the file matched its check
    bool changed_ = false;
};

}  // namespace tembrix
