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

// The keychain in one private file, readable by the user alone and replaced whole. A file that
// cannot be understood is set aside under another name, never overwritten. Safe from any thread.
class FileKeychain final : public Keychain {
  public:
    // The file's folder is made, for the user alone, when the first value is stored.
    FileKeychain(std::filesystem::path file, Log& log) : file_(std::move(file)), log_(log) {}

    bool set(BytesView value, std::string_view account) override;
    std::optional<Bytes> get(std::string_view account) const override;

  private:
    using Items = std::map<std::string, Bytes, std::less<>>;

    // Absent if the file is there and cannot be read.
    std::optional<Items> load() const;
    void setAside() const;

    const std::filesystem::path file_;
    Log& log_;
    mutable std::mutex mutex_;
};

}  // namespace tembrix
