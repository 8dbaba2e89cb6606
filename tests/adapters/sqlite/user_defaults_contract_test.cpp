#include <gtest/gtest.h>
#include <thread>

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "fakes/captured_log.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

struct InMemory {
    MemoryUserDefaults defaults;
};

struct OnDisk {
    TempFolder folder;
    CapturedLog log;
    SqliteUserDefaults defaults{folder.path() / "new" / "defaults.db", log};
    ~OnDisk() { EXPECT_TRUE(log.lines().empty()) << log.lines().front(); }
};

// What holds for user defaults of every kind.
template <class Kind>
struct UserDefaultsContract : testing::Test {
    Kind kind;
    UserDefaults& shared = kind.defaults;
};
using Kinds = testing::Types<InMemory, OnDisk>;
TYPED_TEST_SUITE(UserDefaultsContract, Kinds);

TYPED_TEST(UserDefaultsContract, EveryKindComesBackAsItWas) {
    UserDefaults& defaults = this->shared;
    Bytes big(3'000'000);
    for (std::size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<std::uint8_t>(i * 31 >> 3);
    const std::string text("Мяч \0 \xFF'\"", 11);
    defaults.setData("data", big);
    defaults.setData("empty data", {});
    defaults.setText("text", text);
    defaults.setText("empty text", {});
    defaults.setDate("date", Date{1714564800});
    defaults.setDate("old date", Date{-0.25});
    defaults.setBoolean("true", true);
    defaults.setBoolean("false", false);
    EXPECT_EQ(defaults.data("data"), big);
    EXPECT_EQ(defaults.data("empty data"), Bytes());
    EXPECT_EQ(defaults.text("text"), text);
    EXPECT_EQ(defaults.text("empty text"), "");
    EXPECT_EQ(defaults.date("date"), Date{1714564800});
    EXPECT_EQ(defaults.date("old date"), Date{-0.25});
    EXPECT_TRUE(defaults.boolean("true"));
    EXPECT_FALSE(defaults.boolean("false"));
    EXPECT_FALSE(defaults.boolean("none"));
    EXPECT_FALSE(defaults.data("none") || defaults.text("none") || defaults.date("none"));
}

TYPED_TEST(UserDefaultsContract, AValueOfAnotherKindIsAbsentAndIsReplacedWhole) {
    UserDefaults& defaults = this->shared;
    defaults.setText("key", "1");
    EXPECT_FALSE(defaults.data("key") || defaults.date("key") || defaults.boolean("key"));
    defaults.setBoolean("key", true);
    EXPECT_FALSE(defaults.data("key") || defaults.text("key") || defaults.date("key"));
    defaults.setDate("key", Date{1});
    EXPECT_FALSE(defaults.boolean("key") || defaults.text("key"));
    defaults.setData("key", toBytes("1"));
    EXPECT_FALSE(defaults.text("key") || defaults.date("key") || defaults.boolean("key"));
    EXPECT_EQ(defaults.keys(""), std::vector<std::string>{"key"});
    defaults.remove("key");
    defaults.remove("key");
    EXPECT_FALSE(defaults.data("key"));
    EXPECT_TRUE(defaults.keys("").empty());
}

TYPED_TEST(UserDefaultsContract, KeysAreListedByPrefixInByteOrder) {
    UserDefaults& defaults = this->shared;
    for (const auto* key : {"timeline_b", "timeline_", "timeline_я", "timelines", "timeline_B", "T",
                            "timeline", "timeline_%", ""})
        defaults.setBoolean(key, true);
    EXPECT_EQ(defaults.keys("timeline_"),
              (std::vector<std::string>{"timeline_", "timeline_%", "timeline_B", "timeline_b",
                                        "timeline_я"}));
    EXPECT_EQ(defaults.keys("").size(), 9u);
    EXPECT_EQ(defaults.keys("").front(), "");
    EXPECT_TRUE(defaults.keys("x").empty());
}

TYPED_TEST(UserDefaultsContract, ThreadsMayShareIt) {
    UserDefaults& defaults = this->shared;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&defaults, t] {
            const std::string own = "own" + std::to_string(t);
            for (int i = 0; i < 200; ++i) {
                defaults.setText(own, std::to_string(i));
                defaults.setData("shared", Bytes(static_cast<std::size_t>(i), 7));
                EXPECT_EQ(defaults.text(own), std::to_string(i));
                EXPECT_TRUE(defaults.data("shared"));
                EXPECT_FALSE(defaults.keys("own").empty());
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace tembrix
