#include <algorithm>
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <thread>

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "fakes/captured_log.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

struct InMemory {
    MemoryUserDefaults defaults;

    void refuseWrites() { defaults.refuse("full"); }
    void acceptWrites() { defaults.refuse({}); }
};

struct OnDisk {
    TempFolder folder;
    CapturedLog log;
    SqliteUserDefaults defaults{folder.path() / "new" / "defaults.db", log};
    ~OnDisk() { EXPECT_TRUE(refused || log.lines().empty()) << log.lines().front(); }

    // Limits the size of the file, to simulate a full disk.
    void refuseWrites() {
        refused = true;
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        rlimit full = before;
        full.rlim_cur = 0;
        setrlimit(RLIMIT_FSIZE, &full);
    }
    void acceptWrites() { setrlimit(RLIMIT_FSIZE, &before); }

    rlimit before{};
    bool refused = false;
};

// Tests for all implementations of the user defaults.
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

TYPED_TEST(UserDefaultsContract, AValueInPiecesIsOneValue) {
    UserDefaults& defaults = this->shared;
    std::mt19937 random(5);
    const auto piece = [&](std::size_t size) {
        Bytes bytes(size);
        for (auto& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        return std::make_shared<const ValuePiece>(std::move(bytes));
    };
    ValuePieces pieces;
    for (int i = 0; i < 400; ++i) {
        const auto at = [&] {
            return pieces.begin() + static_cast<std::ptrdiff_t>(random() % (pieces.size() + 1));
        };
        switch (random() % 6) {
            case 0:
                if (!pieces.empty())
                    pieces.erase(std::min(at(), pieces.end() - 1));
                break;
            case 1:
                if (!pieces.empty())
                    *std::min(at(), pieces.end() - 1) = piece(random() % 9000);
                break;
            case 2:
                std::shuffle(pieces.begin(), pieces.end(), random);
                break;
            case 3:
                if (!pieces.empty())
                    pieces.insert(at(), pieces[random() % pieces.size()]);
                break;
            default:
                pieces.insert(at(), piece(random() % 9000));
        }
        if (i % 97 == 50)
            defaults.setText("key", "of another kind");
        if (i % 53 == 20)
            defaults.setData("key", Bytes(50'000, 3));
        if (i % 71 == 30)
            defaults.remove("key");
        const auto before = defaults.changeNumber("key");
        defaults.setPieces("key", pieces);
        ASSERT_EQ(defaults.data("key"), joined(pieces));
        ASSERT_GT(defaults.changeNumber("key"), before);
    }
}

TYPED_TEST(UserDefaultsContract, ARefusedValueIsKeptAndStoredOnceThatIsPossible) {
    UserDefaults& defaults = this->shared;
    defaults.setText("removed", "old");
    defaults.setText("text", "old");
    defaults.makeDurable();
    EXPECT_EQ(defaults.status(), DefaultsStatus{});
    std::atomic<int> changes = 0;
    defaults.setStatusChanged([&] { ++changes; });
    this->kind.refuseWrites();
    defaults.setText("text", "new");
    defaults.setData("data", Bytes(100'000, 7));
    defaults.remove("removed");
    EXPECT_FALSE(defaults.status().allStored);
    EXPECT_FALSE(defaults.status().reason.empty());
    EXPECT_EQ(defaults.text("text"), "new");
    EXPECT_EQ(defaults.data("data"), Bytes(100'000, 7));
    EXPECT_EQ(defaults.keys(""), (std::vector<std::string>{"data", "text"}));
    defaults.makeDurable();
    EXPECT_FALSE(defaults.status().allStored);
    EXPECT_EQ(changes, 1);
    this->kind.acceptWrites();
    defaults.makeDurable();
    EXPECT_EQ(defaults.status(), DefaultsStatus{});
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(defaults.text("text"), "new");
    EXPECT_EQ(defaults.data("data"), Bytes(100'000, 7));
    EXPECT_EQ(defaults.keys(""), (std::vector<std::string>{"data", "text"}));
    defaults.setStatusChanged({});
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
