#include "core/settings/settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "base/json.h"
#include "base/json_style.h"
#include "base/result.h"

#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

// By the name of the setting. Only values that differ from their default are stored.
using StoredSettings = std::map<std::string, std::string>;

template <class Value>
struct Setting {
    const char* name;  // as stored
    SettingsPage page;
    Value SettingsValues::*member;
    double least = 0, most = 0;  // of numbers
};

using enum SettingsPage;

constexpr std::tuple settings{
    Setting<std::string>{"language", general, &SettingsValues::language},
    Setting<int>{"interfaceScale", general, &SettingsValues::interfaceScale, 75, 200},
    Setting<bool>{"compactTags", general, &SettingsValues::compactTags},
    Setting<bool>{"playsOnOpening", playback, &SettingsValues::playsOnOpening},
    Setting<double>{"keySeekStep", playback, &SettingsValues::keySeekStep, leastSeekStep,
                    mostSeekStep},
    Setting<double>{"smallSeekStep", playback, &SettingsValues::smallSeekStep, leastSeekStep,
                    mostSeekStep},
    Setting<double>{"largeSeekStep", playback, &SettingsValues::largeSeekStep, leastSeekStep,
                    mostSeekStep},
    Setting<int>{"volume", playback, &SettingsValues::volume, 0, 100},
    Setting<bool>{"muted", playback, &SettingsValues::muted},
    Setting<std::string>{"exportFolder", files, &SettingsValues::exportFolder},
    Setting<std::string>{"reportServer", files, &SettingsValues::reportServer},
    Setting<std::string>{"downloadServer", files, &SettingsValues::downloadServer},
};

template <class Function>
void forEachSetting(Function&& function) {
    std::apply([&](const auto&... setting) { (function(setting), ...); }, settings);
}

std::string textOf(const std::string& value) {
    return value;
}
std::string textOf(bool value) {
    return value ? "true" : "false";
}
template <class Number>
std::string textOf(Number value) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

bool read(std::string_view text, std::string& value) {
    value = text;
    return true;
}
bool read(std::string_view text, bool& value) {
    value = text == "true";
    return value || text == "false";
}
template <class Number>
bool read(std::string_view text, Number& value) {
    const auto end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
}

template <class Number>
void limit(SettingsValues& values, const Setting<Number>& setting) {
    Number& value = values.*setting.member;
    if constexpr (std::is_floating_point_v<Number>)
        if (std::isnan(value))
            value = SettingsValues{}.*setting.member;
    value =
        std::clamp(value, static_cast<Number>(setting.least), static_cast<Number>(setting.most));
}
void limit(SettingsValues&, const Setting<bool>&) {}
void limit(SettingsValues&, const Setting<std::string>&) {}

}  // namespace

std::string numberText(double number, const Texts& texts) {
    std::string text = textOf(number);
    if (const auto point = text.find('.'); point != std::string::npos)
        text.replace(point, 1, texts.text("decimalSeparator"));
    return text;
}

SettingsValues decodeSettings(BytesView data, Log& log) {
    SettingsValues values;
    const auto stored = decodeJson<StoredSettings>(data);
    if (!stored) {
        log.line("⚠️ Settings: The stored settings cannot be read: " + stored.error().text);
        return values;
    }
    forEachSetting([&](const auto& setting) {
        const auto found = stored->find(setting.name);
        if (found == stored->end())
            return;
        auto value = values.*setting.member;
        if (read(found->second, value))
            values.*setting.member = std::move(value);
        else
            log.line(std::string("⚠️ Settings: Unreadable value of ") + setting.name);
        limit(values, setting);
    });
    return values;
}

Settings::Settings(UserDefaults& defaults, Log& log) : defaults_(defaults), log_(log) {
    load();
}

void Settings::load() {
    if (const auto data = defaults_.data(layout::settingsKey))
        values.set(decodeSettings(*data, log_));
}

void Settings::set(SettingsValues changed) {
    forEachSetting([&](const auto& setting) { limit(changed, setting); });
    if (changed == *values)
        return;
    const SettingsValues defaults;
    StoredSettings stored;
    forEachSetting([&](const auto& setting) {
        if (changed.*setting.member != defaults.*setting.member)
            stored[setting.name] = textOf(changed.*setting.member);
    });
    if (stored.empty())
        defaults_.remove(layout::settingsKey);
    else
        defaults_.setData(layout::settingsKey, *encodeJson(stored, JsonStyle::compact));
    values.set(std::move(changed));
}

void Settings::reset(SettingsPage page) {
    const SettingsValues defaults;
    change([&](SettingsValues& changed) {
        forEachSetting([&](const auto& setting) {
            if (setting.page == page)
                changed.*setting.member = defaults.*setting.member;
        });
    });
}

}  // namespace tembrix
