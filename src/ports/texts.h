#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

#include "base/date.h"
#include "base/signal.h"

namespace tembrix {

// Texts of the user interface by key, in the current language. For an unknown key, the key is
// returned.
class Texts {
  public:
    virtual ~Texts() = default;
    virtual std::string text(std::string_view key) const = 0;
    Signal<> changed;  // the texts are in another language now

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

    // The text of the key with {0} replaced by the number. Its forms are separated by "|": one for
    // 1 and one for the rest, or the three forms of a Slavic language.
    std::string counted(std::string_view key, int number) const {
        const std::string digits = std::to_string(number);
        std::string forms = text(key);
        const bool slavic = std::count(forms.begin(), forms.end(), '|') == 2;
        const int tens = number % 100;
        const int ones = number % 10;
        int form = number == 1 ? 0 : 1;
        if (slavic)
            form = tens >= 11 && tens <= 14 ? 2 : ones == 1 ? 0 : ones >= 2 && ones <= 4 ? 1 : 2;
        for (; form > 0 && forms.find('|') != std::string::npos; --form)
            forms.erase(0, forms.find('|') + 1);
        forms.erase(std::min(forms.find('|'), forms.size()));
        if (const auto place = forms.find("{0}"); place != std::string::npos)
            forms.replace(place, 3, digits);
        return forms;
    }
};

// The user's language and formats.
class Locale {
  public:
    virtual ~Locale() = default;
    virtual std::string preferredLocalization() const = 0;  // "en" or "ru": the texts in use
    virtual std::string identifier() const = 0;             // for example "fr_FR"
    virtual std::string shortDate(Date date, std::string_view localeName) const = 0;
    virtual std::string dateAndTime(Date date) const = 0;  // for reading, with the month's name
    // "yyyy-MM-dd_HH-mm" in local time.
    virtual std::string fileStamp(Date date) const = 0;
};

}  // namespace tembrix
