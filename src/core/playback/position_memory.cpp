#include "core/playback/position_memory.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>

#include "ports/user_defaults.h"

#include "core/playback/video_player_manager.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

constexpr double nearBegin = 1.0;  // seconds
constexpr double nearEnd = 10.0;   // seconds, less in short videos
constexpr double nearEndShare = 0.05;

std::optional<double> secondsFrom(const std::string& text) {
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && std::isfinite(seconds) ? std::optional(seconds) : std::nullopt;
}

std::string textOf(double seconds) {
    const double milliseconds = std::round(seconds * 1000);
    std::string text(32, '\0');
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), milliseconds / 1000);
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
}

}  // namespace

PositionMemory::~PositionMemory() {
    store();
}

void PositionMemory::begin(const std::string& videoId) {
    key_ = layout::positionKey(videoId);
    stored_ = defaults_.text(key_).value_or("");
    if (const auto position = secondsFrom(stored_); position && isWorthKeeping(*position))
        player_.seek(*position);
    position_ = player_.currentTimeValue.observe([this](double) { positionChanged(); });
}

void PositionMemory::forget() {
    position_.reset();
    changed_ = false;
    if (!key_.empty())
        defaults_.remove(key_);
}

// A video that was seen to its end starts at its beginning the next time.
bool PositionMemory::isWorthKeeping(double position) const {
    const double duration = player_.videoDuration();
    return position >= nearBegin &&
           position < duration - std::min(nearEnd, nearEndShare * duration);
}

void PositionMemory::positionChanged() {
    changed_ = true;
    if (waiting_)
        return;
    waiting_ = true;
    timer_ = scheduler_.after(storeInterval, [this] {
        waiting_ = false;
        store();
    });
}

void PositionMemory::store() {
    // Without a duration the file could not be opened; its position is kept for a better day.
    if (!changed_ || player_.videoDuration() <= 0)
        return;
    changed_ = false;
    const double position = player_.currentTime();
    const std::string text = isWorthKeeping(position) ? textOf(position) : std::string();
    if (text == stored_)
        return;
    stored_ = text;
    if (text.empty())
        defaults_.remove(key_);
    else
        defaults_.setText(key_, text);
}

}  // namespace tembrix
