#pragma once

#include <string>

#include "base/bytes.h"
#include "base/log.h"
#include "base/published.h"

#include "ports/texts.h"
#include "ports/user_defaults.h"

namespace tembrix {

// The range of the seek steps, in seconds.
inline constexpr double leastSeekStep = 0.1, mostSeekStep = 600;

// What the user chose in the settings window and its counterparts in other windows, such as the
// volume. The initial values are the defaults.
struct SettingsValues {
    // General
    std::string language;      // "en" or "ru"; empty: that of the system
    int interfaceScale = 100;  // percent, 75 to 200
    bool compactTags = false;  // small tag buttons

    // Playback
    bool playsOnOpening = true;
    double keySeekStep = 3;     // seconds, of Shift with the arrow keys
    double smallSeekStep = 5;   // seconds, of the inner buttons beside play
    double largeSeekStep = 10;  // seconds, of the outer buttons
    int volume = 100;           // percent, 0 to 100
    bool muted = false;

    // Files and servers
    std::string exportFolder;    // where save panels start; empty: the folder used last
    std::string reportServer;    // address
    std::string downloadServer;  // address

    bool operator==(const SettingsValues&) const = default;
};

enum class SettingsPage { general, playback, files };

// A number for a text, such as "2.5", with the decimal separator of the language.
std::string numberText(double number, const Texts& texts);

// Reads stored settings. A value that cannot be read becomes its default; the others are kept.
SettingsValues decodeSettings(BytesView stored, Log& log);

// The settings of the process, stored in the user defaults at each change. Main thread only.
class Settings {
  public:
    Settings(UserDefaults& defaults, Log& log);

    Published<SettingsValues, Settings> values;

    // Numbers outside their range are moved to its nearest end.
    void set(SettingsValues changed);
    // For one value: change([](SettingsValues& v) { v.muted = true; }).
    template <class Change>
    void change(Change&& change) {
        SettingsValues changed = *values;
        change(changed);
        set(std::move(changed));
    }
    // The values of the page become the defaults again.
    void reset(SettingsPage page);

  private:
    void load();

    UserDefaults& defaults_;
    Log& log_;
};

}  // namespace tembrix
