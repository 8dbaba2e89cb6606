#include "core/safety/replaced_data.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fmt/format.h>
#include <optional>
#include <system_error>
#include <tuple>
#include <utility>

#include "base/files.h"

#include "ports/scheduler.h"

namespace tembrix {

namespace {

namespace fs = std::filesystem;
using std::chrono::sys_days;

// "2026-05-01 18-30-00 UTC": valid on every file system, and sorted by time.
std::string momentName(Date date) {
    const auto seconds = static_cast<std::int64_t>(std::floor(date.secondsSince1970));
    const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss time{moment - day};
    return fmt::format("{:04}-{:02}-{:02} {:02}-{:02}-{:02} UTC", static_cast<int>(ymd.year()),
                       static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

// The number at the end of a name; 0 for names without one.
int numberOf(const std::string& name) {
    int number = 0;
    const auto start = name.rfind('(');
    if (start != std::string::npos)
        (void)std::sscanf(name.c_str() + start, "(%9d)", &number);
    return number;
}

std::optional<Date> momentOf(const std::string& name) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (std::sscanf(name.c_str(), "%4d-%2d-%2d %2d-%2d-%2d UTC", &year, &month, &day, &hour,
                    &minute, &second) != 6)
        return std::nullopt;
    const std::chrono::year_month_day ymd{std::chrono::year(year),
                                          std::chrono::month(static_cast<unsigned>(month)),
                                          std::chrono::day(static_cast<unsigned>(day))};
    if (!ymd.ok())
        return std::nullopt;
    const auto days = sys_days(ymd).time_since_epoch().count();
    return Date{static_cast<double>(days) * 86400 + hour * 3600 + minute * 60 + second};
}

}  // namespace

ReplacedData::ReplacedData(fs::path root, const Scheduler& scheduler)
    : root_(std::move(root)), scheduler_(scheduler) {}

std::vector<ReplacedData::State> ReplacedData::states() const {
    std::vector<State> states;
    std::error_code failure;
    for (auto entry = fs::directory_iterator(root_, failure);
         !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string name = pathText(entry->path().filename());
        std::error_code ignored;
        if (const auto moment = momentOf(name); moment && entry->is_directory(ignored))
            states.push_back({name, *moment, numberOf(name)});
    }
    std::sort(states.begin(), states.end(), [](const State& one, const State& other) {
        return std::tie(one.number, one.name) > std::tie(other.number, other.name);
    });
    return states;
}

fs::path ReplacedData::folder(const std::string& name) const {
    return root_ / pathFromText(name);
}

std::string ReplacedData::begin() const {
    const auto states = this->states();
    const int last = states.empty() ? 0 : states.front().number;
    return fmt::format("{} ({})", momentName(scheduler_.now()), last + 1);
}

void ReplacedData::finish(const std::string& spared) const {
    const auto states = this->states();
    for (std::size_t i = keptCount; i < states.size(); ++i) {
        std::error_code ignored;
        if (states[i].name != spared)
            fs::remove_all(folder(states[i].name), ignored);
    }
}

void ReplacedData::removeAll() const {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

}  // namespace tembrix
