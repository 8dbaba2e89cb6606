#include <QByteArray>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "adapters/qt/file_texts.h"
#include "adapters/qt/qt_directories.h"
#include "adapters/qt/qt_locale.h"
#include "fakes/captured_log.h"
#include "fakes/fake_texts.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

// Sets environment variables for the duration of a test.
class Environment {
  public:
    void set(const char* name, const fs::path& value) {
        old_.emplace_back(name, qgetenv(name));
        qputenv(name, value.c_str());
    }
    ~Environment() {
        for (auto entry = old_.rbegin(); entry != old_.rend(); ++entry)
            entry->second.isNull() ? qunsetenv(entry->first) : qputenv(entry->first, entry->second);
    }

  private:
    std::vector<std::pair<const char*, QByteArray>> old_;
};

TEST(QtDirectories, FollowTheUsersSettings) {
    TempFolder home;
    Environment environment;
    environment.set("HOME", home.path());
    for (const char* name :
         {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        environment.set(name, "");
    EXPECT_EQ(qtDirectories().documents, home.path() / "Documents");
    EXPECT_EQ(qtDirectories().applicationSupport, home.path() / ".local/share");
    EXPECT_EQ(qtDirectories().temporary, home.path() / ".cache/tembrix-stat");
    EXPECT_EQ(programDataFolder(), home.path() / ".local/share/tembrix-stat");
    EXPECT_EQ(programStateFolder(), home.path() / ".local/state/tembrix-stat");

    home.write(".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Документы\"\n");
    environment.set("XDG_DATA_HOME", home.path() / "данные");
    environment.set("XDG_STATE_HOME", home.path() / "state");
    EXPECT_EQ(qtDirectories().documents, home.path() / "Документы");
    EXPECT_EQ(qtDirectories().applicationSupport, home.path() / "данные");
    EXPECT_EQ(programStateFolder(), home.path() / "state/tembrix-stat");
    EXPECT_FALSE(fs::exists(home.path() / "данные"));
}

TEST(FileTexts, GivesTheTextOrTheKey) {
    TempFolder folder;
    CapturedLog log;
    folder.write("ru.json", R"({"hello": "Привет, {0}", "empty": ""})");
    folder.write("en.json", "{ broken");
    const FileTexts texts(folder.path(), "ru", log);
    EXPECT_EQ(texts.format("hello", {"мир"}), "Привет, мир");
    EXPECT_EQ(texts.text("empty"), "");
    EXPECT_EQ(texts.text("unknown"), "unknown");
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(FileTexts(folder.path(), "en", log).text("hello"), "hello");
    EXPECT_EQ(FileTexts(folder.path(), "fr", log).text("hello"), "hello");
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST(FileTexts, AnotherLanguageReplacesAllTexts) {
    TempFolder folder;
    CapturedLog log;
    folder.write("en.json", R"({"hello": "Hello", "only": "here"})");
    folder.write("ru.json", R"({"hello": "Привет"})");
    FileTexts texts(folder.path(), "en", log);
    std::vector<std::string> seen;
    const auto follow = texts.changed.observe([&] { seen.push_back(texts.text("hello")); });
    texts.setLanguage("ru");
    EXPECT_EQ(seen, std::vector<std::string>{"Привет"});
    EXPECT_EQ(texts.text("only"), "only");
}

TEST(FileTexts, TheProgramSpeaksBothLanguages) {
    CapturedLog log;
    for (const char* language : {"en", "ru"})
        EXPECT_NE(FileTexts(TEMBRIX_RESOURCES "/texts", language, log).text("cancelButtonTitle"),
                  "cancelButtonTitle");
    EXPECT_TRUE(log.lines().empty());
}

TEST(QtLocale, TheFirstLanguageThatTheProgramSpeaksWins) {
    EXPECT_EQ(chooseLanguage({"ru-RU", "en-US"}), "ru");
    EXPECT_EQ(chooseLanguage({"de-DE", "ru-Cyrl-RU", "en"}), "ru");
    EXPECT_EQ(chooseLanguage({"uk-UA", "en-GB", "ru"}), "en");
    EXPECT_EQ(chooseLanguage({"uz-Latn-UZ", "en"}), "ru");
    EXPECT_EQ(chooseLanguage({"de-DE"}), "en");
    EXPECT_EQ(chooseLanguage({"C"}), "en");
    EXPECT_EQ(chooseLanguage({}), "en");
}

TEST(QtLocale, DatesAsTheFakeWritesThem) {
    const FakeLocale fake;
    const QtLocale locale("ru");
    EXPECT_EQ(locale.preferredLocalization(), "ru");
    for (const double seconds : {1714564800.0, 0.5, 951830000.0}) {
        const Date date{seconds};
        EXPECT_EQ(locale.fileStamp(date), fake.fileStamp(date));
        EXPECT_EQ(locale.shortDate(date, "en_US"), fake.shortDate(date, "en_US"));
    }
    EXPECT_EQ(locale.shortDate({1714564800.0}, "ru_RU"), "01.05.2024");
    EXPECT_EQ(locale.shortDate({1714564800.0}, "fr_FR"), "01/05/2024");
}

}  // namespace
}  // namespace tembrix
