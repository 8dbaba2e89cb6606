#include "core/commands/command_keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

#include "core/commands/commands.h"
#include "fakes/captured_log.h"
#include "fakes/memory_user_defaults.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct CommandKeysTest : testing::Test {
    MemoryUserDefaults defaults;
    CapturedLog log;
    CommandKeys keys{defaults, log};
};

TEST_F(CommandKeysTest, NoKeyBelongsToTwoCommandsOfOneWindow) {
    std::set<std::string> names;
    for (const CommandRow& row : commandTable()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        for (const auto& key : keys.keys(row.id))
            EXPECT_THAT(keys.conflicts(row.id, key), IsEmpty()) << row.name << " " << key;
    }
}

TEST_F(CommandKeysTest, ChangedKeysComeBackAfterARestartAndDefaultsAreNotStored) {
    keys.setKeys(Command::undo, {"⌘+U", "F5"});
    keys.setKeys(Command::zoomIn, {});
    EXPECT_EQ(keys.commandFor("cmd+u", CommandScope::project), Command::undo);
    EXPECT_EQ(keys.commandFor("cmd+z", CommandScope::project), std::nullopt);
    EXPECT_EQ(keys.caption(Command::undo), "Ctrl+U");
    EXPECT_EQ(keys.caption(Command::redo), "Ctrl+Shift+Z");
    {
        const CommandKeys later(defaults, log);
        EXPECT_THAT(later.keys(Command::undo), ElementsAre("cmd+u", "key-96"));
        EXPECT_THAT(later.keys(Command::zoomIn), IsEmpty());
    }
    keys.setKeys(Command::undo, {"cmd+z"});
    keys.reset(Command::zoomIn);
    EXPECT_FALSE(defaults.data("commandKeys"));
    EXPECT_EQ(keys.commandFor("cmd+=", CommandScope::project), Command::zoomIn);

    const std::string garbage = "{\"undo\": 5}";
    defaults.setData("commandKeys", toBytes(garbage));
    EXPECT_EQ(CommandKeys(defaults, log).caption(Command::undo), "Ctrl+Z");
}

TEST_F(CommandKeysTest, AConflictIsOneThatAWindowWouldSee) {
    EXPECT_THAT(keys.conflicts(Command::openGuide, "⌘+Y"), ElementsAre(Command::redo))
        << "works everywhere, so also in project windows";
    EXPECT_THAT(keys.conflicts(Command::openVideo, "⌘+Y"), IsEmpty()) << "in the list alone";
    EXPECT_THAT(keys.conflicts(Command::openVideo, "F2"), ElementsAre(Command::renameVideo));
    EXPECT_THAT(keys.conflicts(Command::zoomIn, "Space"), ElementsAre(Command::playPause));
}

TEST_F(CommandKeysTest, TheLatestBindingIsInForceAndARuleDecides) {
    Settings settings(defaults, log);
    Commands commands(keys, settings);
    EXPECT_FALSE(commands.run(Command::undo)) << "nobody can carry it out";
    int first = 0, second = 0, changes = 0;
    bool allowed = true;
    const auto seen = commands.changed.observe([&] { ++changes; });
    const auto below = commands.bind(Command::undo, {[&] { ++first; }, {}, {}});
    {
        const auto above = commands.bind(
            Command::undo, {[&] { ++second; }, [&] { return allowed; }, [&] { return !allowed; }});
        EXPECT_TRUE(commands.run(Command::undo));
        EXPECT_EQ(commands.isChecked(Command::undo), false);
        allowed = false;
        EXPECT_FALSE(commands.run(Command::undo));
    }
    EXPECT_TRUE(commands.run(Command::undo));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(commands.isChecked(Command::undo), std::nullopt);
}

}  // namespace
}  // namespace tembrix
