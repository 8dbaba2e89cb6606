#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "base/result.h"

namespace tembrix {

// A file that names the restore by hand that is under way, so that the next start finishes what a
// killed process left half done.
class UnfinishedRestore {
  public:
    struct Restore {
        std::string source;  // name of the replaced state; empty for the backup
        std::string kept;    // name of the state for what it replaces
    };

    explicit UnfinishedRestore(std::filesystem::path file) : file_(std::move(file)) {}

    Result<void> begin(const Restore& restore) const;
    void end() const;
    std::optional<Restore> find() const;

  private:
    const std::filesystem::path file_;
};

}  // namespace tembrix
