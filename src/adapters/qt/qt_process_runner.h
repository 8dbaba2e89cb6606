#pragma once

#include "ports/process_runner.h"

namespace tembrix {

// Programs by absolute path or by name on the search path. Their input is empty. A program that was
// ended by a signal has 128 plus the signal's number as its status.
class QtProcessRunner final : public ProcessRunner {
  public:
    Result<ProcessOutcome> run(const std::string& program,
                               const std::vector<std::string>& arguments,
                               std::stop_token stop = {}) override;
};

}  // namespace tembrix
