#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/bytes.h"
#include "base/log.h"

#include "ports/keychain.h"

namespace tembrix {

// The keychain in one private file. The file is readable by the user alone and always replaced as a
// whole. A file that cannot be parsed is renamed, not overwritten. Thread-safe.
class FileKeychain final : public Keychain {
  public:
    // The folder of the file is created for the user alone when the first value is stored.
    FileKeychain(std::filesystem::path file, Log& log) : file_(std::move(file)), log_(log) {}

    bool set(BytesView value, std::string_view account) override;
    std::optional<Bytes> get(std::string_view account) const override;

  private:
    using Items = std::map<std::string, Bytes, std::less<>>;

    // Absent if the file exists and cannot be read.
    std::optional<Items> load() const;
    void setAside() const;

    const std::filesystem::path file_;
    Log& log_;
    mutable std::mutex mutex_;
};

}  // namespace tembrix
