#include "core/commands/key_conflicts.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "fakes/captured_log.h"
#include "fakes/memory_user_defaults.h"

namespace tembrix {
namespace {

struct KeyConflictsTest : testing::Test {
    MemoryUserDefaults defaults;
    CapturedLog log;
    CommandKeys keys{defaults, log};
    CollectionLists collection;

    KeyConflictsTest() {
        Tag shot;
        shot.name = "Shot";
        shot.hotkey = "⌘+J";
        shot.labelHotkeys.emplace()["goal"] = "g";
        collection.tags = {shot};
        Label goal;
        goal.id = "goal";
        goal.name = "Goal";
        collection.labels = {goal};
    }
    KeyConflicts of(const char* key, Command command = Command::zoomIn) const {
        return keyConflicts(keys, collection, command, key);
    }
};

TEST_F(KeyConflictsTest, NamesTheCommandsTheTagsAndTheLabelsWithTheKey) {
    EXPECT_TRUE(of("⌘+U").none());
    EXPECT_EQ(of("⌘+Z").commands, std::vector{Command::undo});
    EXPECT_EQ(of("⌘+J").hotkeys, (std::vector<HotKeyUse>{{"Shot", ""}}));
    EXPECT_EQ(of("G").hotkeys, (std::vector<HotKeyUse>{{"Shot", "Goal"}}));
    EXPECT_TRUE(of("⌘+J", Command::deleteVideo).none()) << "tags are not marked in the list";
    keys.setKeys(Command::undo, {});
    EXPECT_TRUE(of("⌘+Z").none());
}

TEST_F(KeyConflictsTest, FixedKeysAndThoseOfControlsCannotBeTaken) {
    EXPECT_EQ(of("Space").fixed, std::vector{Command::playPause});
    EXPECT_EQ(of("⇧+→").fixed, std::vector{Command::seekForward3});
    for (const char* key : {"Tab", "⇧+Tab", "Esc", "Return", "⌘+←", "⌥+Space"})
        EXPECT_EQ(std::string(of(key).refusal), "keyBelongsToControls") << key;
    for (const char* key : {"⌘", "⌘+⇧", ""})
        EXPECT_EQ(std::string(of(key).refusal), "keyNeedsAnotherKey") << key;
    EXPECT_TRUE(of("⌘+Return").none());
}

}  // namespace
}  // namespace tembrix
