#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ports/process_runner.h"

namespace tembrix {

// Records the calls and answers each one by `behavior`, which may create the program's files. By
// default programs succeed without output.
class FakeProcessRunner final : public ProcessRunner {
  public:
    struct Call {
        std::string program;
        std::vector<std::string> arguments;
        bool operator==(const Call&) const = default;
    };

    Result<ProcessOutcome> run(const std::string& program,
                               const std::vector<std::string>& arguments,
                               std::stop_token = {}) override {
        const Call call{program, arguments};
        {
            const std::lock_guard lock(mutex_);
            calls_.push_back(call);
        }
        return behavior(call);
    }

    std::vector<Call> calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

    std::function<Result<ProcessOutcome>(const Call&)> behavior = [](const Call&) {
        return Result<ProcessOutcome>(ProcessOutcome{});
    };

  private:
    mutable std::mutex mutex_;
    std::vector<Call> calls_;
};

}  // namespace tembrix
