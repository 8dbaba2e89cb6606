#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tembrix {

// Where log lines go. There are no levels: a line opens with its subject and an emoji by outcome.
// Safe to call from any thread.
class Log {
  public:
    virtual ~Log() = default;
    virtual void line(std::string_view text) = 0;
};

// Lines to standard output, flushed one by one so that a killed process leaves its last words.
class StandardLog final : public Log {
  public:
    void line(std::string_view text) override;

  private:
    std::mutex mutex_;
};

}  // namespace tembrix
