#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "base/date.h"

namespace tembrix {

class Scheduler;

// The data that restores have replaced: one folder per restore, named after its time, with the
// layout of the backup. The last few are kept. Must be used by one thread at a time.
class ReplacedData {
  public:
    static constexpr std::size_t keptCount = 5;

    struct State {
        std::string name;  // name of the folder
        Date moment;
        bool operator==(const State&) const = default;
    };

    ReplacedData(std::filesystem::path root, const Scheduler& scheduler);

    std::vector<State> states() const;  // the newest first
    std::filesystem::path folder(const std::string& name) const;

    // The folder for the data about to be replaced. It is created when something is moved into it.
    std::filesystem::path begin() const;
    // Removes the oldest states, except for the last keptCount.
    void finish() const;
    void removeAll() const;

  private:
    const std::filesystem::path root_;
    const Scheduler& scheduler_;
};

}  // namespace tembrix
