#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "base/date.h"

namespace tembrix {

class Scheduler;

// The data that restores have replaced: one folder per restore, with the layout of the backup. It
// is named after its time and numbered in the order of making, because the clock may be set. The
// last few are kept. Must be used by one thread at a time.
class ReplacedData {
  public:
    static constexpr std::size_t keptCount = 5;

    struct State {
        std::string name;  // name of the folder
        Date moment;
        int number = 0;  // in the order of making
        bool operator==(const State&) const = default;
    };

    ReplacedData(std::filesystem::path root, const Scheduler& scheduler);

    std::vector<State> states() const;  // the newest first
    std::filesystem::path folder(const std::string& name) const;

    // A name for the folder of the data about to be replaced. The folder is created when something
    // is moved into it.
    std::string begin() const;
    // Removes the oldest states, except for the last keptCount and the named one.
    void finish(const std::string& spared = {}) const;
    void removeAll() const;

  private:
    const std::filesystem::path root_;
    const Scheduler& scheduler_;
};

}  // namespace tembrix
