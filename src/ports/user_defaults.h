#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "base/date.h"

namespace tembrix {

// Small values by key that survive the process. A stored value is safe from a killed process as
// soon as the call returns. A value read as another kind than it was stored as is absent. Failures
// are logged by the adapter and otherwise swallowed. Safe for concurrent use from any thread.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    virtual std::optional<Bytes> data(std::string_view key) const = 0;
    virtual std::optional<std::string> text(std::string_view key) const = 0;
    virtual std::optional<Date> date(std::string_view key) const = 0;
    virtual bool boolean(std::string_view key) const = 0;  // false when absent

    virtual void setData(std::string_view key, BytesView value) = 0;
    virtual void setText(std::string_view key, std::string_view value) = 0;
    virtual void setDate(std::string_view key, Date value) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void remove(std::string_view key) = 0;

    // The keys that begin with `prefix`, in ascending order; all keys for an empty prefix.
    virtual std::vector<std::string> keys(std::string_view prefix) const = 0;
};

}  // namespace tembrix
