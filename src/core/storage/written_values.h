#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

namespace tembrix {

// Which change of each value the files under Documents contain. Kept in a file beside them, since
// the documents themselves have a fixed form. The numbers belong to one store of defaults; with
// another store the list is empty.
class WrittenValues {
  public:
    struct Entry {
        std::uint64_t number = 0;  // of the change
        std::uint64_t hash = 0;    // of the document; 0 for values of several files
        bool operator==(const Entry&) const = default;
    };

    explicit WrittenValues(std::filesystem::path file);

    // The store that the file on the disk belongs to, and its largest number.
    const std::string& storedIdentity() const { return identity_; }
    std::uint64_t lastNumber() const;

    // Forgets the entries of any other store.
    void useFor(const std::string& identity);
    std::optional<Entry> find(std::string_view key) const;
    void set(const std::string& key, Entry entry);
    void clear();
    const std::map<std::string, Entry, std::less<>>& entries() const { return entries_; }
    // Writes the file if something changed.
    Result<void> save();

  private:
    const std::filesystem::path file_;
    std::string identity_;
    std::map<std::string, Entry, std::less<>> entries_;
    bool changed_ = false;
};

}  // namespace tembrix
