#pragma once

#include "ports/process_runner.h"

namespace tembrix {

// Runs programs given by absolute path or by name on the search path. Their standard input is
// empty. The status of a program ended by a signal is 128 plus the number of the signal.
class QtProcessRunner final : public ProcessRunner {
  public:
    Result<ProcessOutcome> run(const std::string& program,
                               const std::vector<std::string>& arguments,
                               std::stop_token stop = {}) override;
};

}  // namespace tembrix
