#include "core/records/video_records.h"

#include <cctype>
#include <cstddef>
#include <ctime>
#include <string_view>

#include "base/utf8_text.h"

namespace tembrix {

namespace {

std::string namePart(const std::string& text) {
    return replaced(trimmed(text), " ", "_");
}

// Reads "yyyy-MM-dd_HH-mm" in local time.
std::optional<Date> momentOfStamp(std::string_view stamp) {
    constexpr std::string_view form = "0000-00-00_00-00";
    if (stamp.size() != form.size())
        return std::nullopt;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool digit = std::isdigit(static_cast<unsigned char>(stamp[i])) != 0;
        if (form[i] == '0' ? !digit : stamp[i] != form[i])
            return std::nullopt;
    }
    const auto number = [&](std::size_t from, std::size_t length) {
        int value = 0;
        for (const char digit : stamp.substr(from, length))
            value = 10 * value + (digit - '0');
        return value;
    };
    std::tm time{};
    time.tm_year = number(0, 4) - 1900;
    time.tm_mon = number(5, 2) - 1;
    time.tm_mday = number(8, 2);
    time.tm_hour = number(11, 2);
    time.tm_min = number(14, 2);
    time.tm_isdst = -1;
    return Date{static_cast<double>(std::mktime(&time))};
}

}  // namespace

std::string VideoMetadata::videoName(const std::function<std::string(Date)>& fileStamp) const {
    return joined({namePart(team1), namePart(team2), namePart(score), fileStamp(dateTime)}, "_");
}

std::string matchTitle(const VideoMetadata& match) {
    std::vector<std::string> teams;
    for (const auto& team : {trimmed(match.team1), trimmed(match.team2)})
        if (!team.empty())
            teams.push_back(team);
    std::vector<std::string> parts;
    if (!teams.empty())
        parts.push_back(joined(teams, " – "));
    if (const auto score = trimmed(match.score); !score.empty())
        parts.push_back(score);
    return joined(parts, ", ");
}

MatchTitle matchTitle(const std::string& videoName, const std::optional<VideoMetadata>& match) {
    constexpr std::size_t stampLength = 16;
    if (videoName.size() <= stampLength)
        return {videoName, std::nullopt};
    const std::string before = videoName.substr(0, videoName.size() - stampLength);
    const auto moment = momentOfStamp(std::string_view(videoName).substr(before.size()));
    if (!moment || !before.ends_with('_'))
        return {videoName, std::nullopt};
    if (match && match->videoName([](Date) { return std::string(); }) == before)
        return {matchTitle(*match), match->dateTime};
    std::string words = before;
    while (words.find("__") != std::string::npos)  // where a team or the score is missing
        words = replaced(words, "__", "_");
    return {trimmed(replaced(words, "_", " ")), moment};
}

}  // namespace tembrix
