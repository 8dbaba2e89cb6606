#include "core/settings/settings.h"

#include <gtest/gtest.h>

#include "base/bytes.h"

#include "core/settings/settings_checks.h"
#include "core/storage/data_layout.h"
#include "fakes/captured_log.h"
#include "fakes/memory_user_defaults.h"

namespace tembrix {
namespace {

struct SettingsTest : testing::Test {
    CapturedLog log;
    MemoryUserDefaults defaults;
};

TEST_F(SettingsTest, ValuesComeBackAtTheNextStartAndAPageIsResetAlone) {
    {
        Settings settings(defaults, log);
        settings.change([](SettingsValues& v) {
            v.language = "ru";
            v.keySeekStep = 2.5;
            v.muted = true;
            v.exportFolder = "/media/films \"2026\"";
            v.interfaceScale = 1000;
        });
        EXPECT_EQ(settings.values->interfaceScale, 200);
    }
    Settings settings(defaults, log);
    EXPECT_EQ(settings.values->language, "ru");
    EXPECT_EQ(settings.values->keySeekStep, 2.5);
    EXPECT_TRUE(settings.values->muted);
    EXPECT_EQ(settings.values->exportFolder, "/media/films \"2026\"");
    EXPECT_EQ(settings.values->interfaceScale, 200);

    settings.reset(SettingsPage::playback);
    EXPECT_EQ(settings.values->keySeekStep, 3);
    EXPECT_FALSE(settings.values->muted);
    EXPECT_EQ(settings.values->language, "ru");
    settings.set({});
    EXPECT_FALSE(defaults.data(layout::settingsKey));
}

TEST_F(SettingsTest, OneUnreadableValueDoesNotCostTheOthers) {
    defaults.setData(layout::settingsKey,
                     toBytes(R"({"volume":"loud","muted":"true","largeSeekStep":"-3"})"));
    Settings settings(defaults, log);
    EXPECT_EQ(settings.values->volume, 100);
    EXPECT_TRUE(settings.values->muted);
    EXPECT_EQ(settings.values->largeSeekStep, 0.1);
}

TEST(AddressFault, NamesTheFirstFault) {
    for (const char* good :
         {"", "http://a", "https://reports.example.com", "HTTPS://Example.com:8443/api/",
          "http://192.168.1.20:80", "http://[::1]:8080/x", "https://отчёты.рф"})
        EXPECT_EQ(addressFault(good), nullptr) << good;
    const std::pair<const char*, std::string> bad[] = {
        {"example.com", "addressHasNoScheme"},
        {"ftp://example.com", "addressHasNoScheme"},
        {"https://", "addressHasNoHost"},
        {"https:///path", "addressHasNoHost"},
        {"https://:80", "addressHasNoHost"},
        {"https://user@example.com", "addressHasNoHost"},
        {"https://a..b", "addressHasNoHost"},
        {"http://[::1", "addressHasNoHost"},
        {"https://a:0", "addressHasBadPort"},
        {"https://a:65536", "addressHasBadPort"},
        {"https://a:", "addressHasBadPort"},
        {"https://a:8x", "addressHasBadPort"},
        {"https://a b", "addressHasBlank"},
        {" https://a", "addressHasBlank"},
        {"https://a/?key=1", "addressHasQuestion"},
    };
    for (const auto& [address, fault] : bad) {
        const char* found = addressFault(address);
        EXPECT_EQ(found ? found : "none", fault) << address;
    }
}

}  // namespace
}  // namespace tembrix
