#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tembrix {

// Receives log lines. There are no levels: a line starts with an emoji for the outcome and its
// subject. Thread-safe.
class Log {
  public:
    virtual ~Log() = default;
    virtual void line(std::string_view text) = 0;
};

// Writes lines to standard output and flushes each one, so that none is lost if the process is
// killed.
class StandardLog final : public Log {
  public:
    void line(std::string_view text) override;

  private:
    std::mutex mutex_;
};

}  // namespace tembrix
