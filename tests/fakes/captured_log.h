#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"

#include "fakes/interleaving.h"

namespace tembrix {

// Stores the lines for the test.
class CapturedLog final : public Log {
  public:
    void line(std::string_view text) override {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(text);
    }

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    // Whether a line is equal to this text or contains it.
    bool has(std::string_view line) const {
        const auto all = lines();
        return std::find(all.begin(), all.end(), line) != all.end();
    }
    bool contains(std::string_view part) const {
        const auto all = lines();
        return std::any_of(all.begin(), all.end(), [&](const std::string& line) {
            return line.find(part) != std::string::npos;
        });
    }
    void clear() {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace tembrix
