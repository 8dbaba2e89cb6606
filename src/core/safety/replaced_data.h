#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "base/date.h"

namespace tembrix {

class Scheduler;

// What restores have replaced: a folder per restore, named after its moment, with the layout of the
// backup. The last few are kept. The caller sees to it that one thread works here at a time.
class ReplacedData {
  public:
    static constexpr std::size_t keptCount = 5;

    struct State {
        std::string name;  // of the folder
        Date moment;
        bool operator==(const State&) const = default;
    };

    ReplacedData(std::filesystem::path root, const Scheduler& scheduler);

    std::vector<State> states() const;  // the newest first
    std::filesystem::path folder(const std::string& name) const;

    // A folder for what is about to be replaced. It is made when something is moved into it.
    std::filesystem::path begin() const;
    // Removes the oldest states beyond those that are kept.
    void finish() const;
    void removeAll() const;

  private:
    const std::filesystem::path root_;
    const Scheduler& scheduler_;
};

}  // namespace tembrix
