#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "base/date.h"

namespace tembrix {

// Texts of the user interface by key, in the current language. For an unknown key, the key is
// returned.
class Texts {
  public:
    virtual ~Texts() = default;
    virtual std::string text(std::string_view key) const = 0;

    // The text of the key with {0}, {1}, ... replaced by the arguments.
    std::string format(std::string_view key,
                       std::initializer_list<std::string_view> arguments) const {
        std::string result = text(key);
        std::size_t index = 0;
        for (const auto argument : arguments) {
            const std::string mark = "{" + std::to_string(index++) + "}";
            for (auto at = result.find(mark); at != std::string::npos;
                 at = result.find(mark, at + argument.size()))
                result.replace(at, mark.size(), argument);
        }
        return result;
    }
};

// The user's language and formats.
class Locale {
  public:
    virtual ~Locale() = default;
    virtual std::string preferredLocalization() const = 0;  // "en" or "ru": the texts in use
    virtual std::string identifier() const = 0;             // for example "fr_FR"
    virtual std::string shortDate(Date date, std::string_view localeName) const = 0;
    // "yyyy-MM-dd_HH-mm" in local time.
    virtual std::string fileStamp(Date date) const = 0;
};

}  // namespace tembrix
