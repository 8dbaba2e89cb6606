#pragma once

#include <cmath>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "ports/texts.h"

namespace tembrix {

// Gives each key as its own text, so that tests name keys; set() gives one a text with places for
// arguments.
class FakeTexts final : public Texts {
  public:
    std::string text(std::string_view key) const override {
        const auto found = texts_.find(key);
        return prefix_ + (found == texts_.end() ? std::string(key) : found->second);
    }
    void set(std::string key, std::string text) {
        texts_.insert_or_assign(std::move(key), std::move(text));
    }
    // Speaks another language, in which all texts begin with the prefix.
    void speak(std::string prefix) {
        prefix_ = std::move(prefix);
        changed.emit();
    }

  private:
    std::string prefix_;
    std::map<std::string, std::string, std::less<>> texts_;
};

// A user in the UTC time zone. Short dates are "dd/MM/yyyy" in French and "M/d/yy" in any other
// language.
class FakeLocale final : public Locale {
  public:
    std::string language = "en";
    std::string name = "en_US";

    std::string preferredLocalization() const override { return language; }
    std::string identifier() const override { return name; }
    std::string shortDate(Date date, std::string_view localeName) const override {
        const auto t = parts(date);
        if (localeName.starts_with("fr"))
            return written(t, "%d/%m/%Y");
        return std::to_string(t.tm_mon + 1) + "/" + std::to_string(t.tm_mday) + "/" +
               written(t, "%y");
    }
    std::string dateAndTime(Date date) const override {
        return written(parts(date), "%-d %B %Y, %H:%M");
    }
    std::string fileStamp(Date date) const override {
        return written(parts(date), "%Y-%m-%d_%H-%M");
    }

  private:
    static std::tm parts(Date date) {
        const auto seconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
        std::tm result{};
        gmtime_r(&seconds, &result);
        return result;
    }
    static std::string written(const std::tm& t, const char* format) {
        char text[32];
        return std::string(text, std::strftime(text, sizeof text, format, &t));
    }
};

}  // namespace tembrix
