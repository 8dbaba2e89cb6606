#pragma once

#include <stop_token>
#include <string>
#include <vector>

#include "base/result.h"

namespace tembrix {

struct ProcessOutcome {
    int exitStatus = 0;
    std::string output;  // standard output and standard error in one stream
};

// Runs programs. Errors: domain "process" if the program cannot be started.
class ProcessRunner {
  public:
    virtual ~ProcessRunner() = default;
    // Blocks until the program ends; call it on a background thread. A stop request kills the
    // program within a tenth of a second.
    virtual Result<ProcessOutcome> run(const std::string& program,
                                       const std::vector<std::string>& arguments,
                                       std::stop_token stop = {}) = 0;
};

}  // namespace tembrix
