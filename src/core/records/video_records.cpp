#include "core/records/video_records.h"

#include "base/utf8_text.h"

namespace tembrix {

std::string VideoMetadata::videoName(const std::function<std::string(Date)>& fileStamp) const {
    const auto part = [](const std::string& text) { return replaced(trimmed(text), " ", "_"); };
    return joined({part(team1), part(team2), part(score), fileStamp(dateTime)}, "_");
}

}  // namespace tembrix
