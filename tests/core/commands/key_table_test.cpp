#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "core/commands/key_router.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/notifications/events.h"
#include "fakes/captured_log.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

struct Windows final : KeyWindows {
    bool isControlOrLibraryKey() const override { return panel; }
    bool isProjectWindowActive() const override { return project; }
    bool isViewerActive() const override { return false; }
    bool panel = false;
    bool project = false;
};

struct NoPlayer final : KeyTransport {
    void togglePlayPause() override {}
    double transportTime() const override { return 0; }
    void seek(double) override {}
};

// Where a key is pressed, as a user would say it.
enum Place {
    list,
    searchField,
    listSheet,
    video,
    panel,
    panelField,
    message,
    labelSheet,
    nameSheet,
    editor,
    menu
};

struct KeyTableTest : testing::Test {
    MemoryUserDefaults defaults;
    CapturedLog log;
    CommandKeys keys{defaults, log};
    const Settings settings{defaults, log};
    Commands commands{keys, settings};
    EventBus events;
    VirtualScheduler scheduler;
    FocusStateManager focus;
    NoPlayer player;
    Windows windows;
    HotKeyManager hotkeys{events, scheduler, focus, player, settings};
    KeyRouter router{commands, [this] { return windows.project ? &hotkeys : nullptr; }};
    std::vector<Subscription> bound;

    void SetUp() override {
        hotkeys.setKeyWindows(&windows);
        Tag tag;
        tag.id = "tag";
        tag.hotkey = "A";
        tag.labelHotkeys.emplace()["label"] = "b";
        Tag control;
        control.id = "control";
        control.hotkey = "⌘+T";  // also the key of a command
        hotkeys.registerHotkeys({tag, control}, TagCollection::standard());
        for (const CommandRow& row : commandTable())
            bound.push_back(commands.bind(row.id, {[] {}, {}, {}}));
    }

    // What the key does there: "view", "hot key", "nothing" or the name of a command.
    std::string meaning(Place place, const KeyPress& press, bool repeated = false) {
        windows = {};
        windows.project = place >= video && place != menu;
        windows.panel = place >= panel && place != menu;
        const bool sheet = place == nameSheet || place == listSheet;
        KeySituation at;
        at.window = place <= listSheet ? CommandScope::list : CommandScope::project;
        at.sheet = place == message               ? KeySituation::Sheet::message
                   : sheet || place == labelSheet ? KeySituation::Sheet::other
                                                  : KeySituation::Sheet::none;
        at.textField = place == searchField || place == panelField || sheet;
        at.menuOpen = place == menu;
        at.repeated = repeated;
        focus.setTextFieldFocused(at.textField);
        if (place == nameSheet)
            events.post(events::AddLineSheetAppeared{});
        std::optional<HotKeyManager::LabelChoice> labels;
        if (place == labelSheet)
            labels = hotkeys.beginLabelChoice({});
        events.post(events::EditorModeChanged{place == editor});
        const auto decision = router.decide(press, at);
        events.post(events::SheetDismissed{});
        if (labels)
            hotkeys.endLabelChoice(*labels);
        switch (decision.meaning) {
            case KeyRouter::Meaning::view:
                return "view";
            case KeyRouter::Meaning::hotKey:
                return "hot key";
            case KeyRouter::Meaning::nothing:
                return "nothing";
            case KeyRouter::Meaning::command:
                return commandRow(*decision.command).name;
        }
        return {};
    }
};

constexpr KeyModifiers none{}, shift{.shift = true}, ctrl{.command = true}, alt{.option = true},
    ctrlShift{.shift = true, .command = true};

KeyPress press(int code, KeyModifiers modifiers = {}) {
    return {code, modifiers, ""};
}

// What each key does in each place. This table is the agreement; the router follows it.
TEST_F(KeyTableTest, EachKeyDoesWhatTheTableSays) {
    constexpr int a = 0, b = 11, f = 3, k = 40, o = 31, q = 12, t = 17, comma = 43, f1 = 122,
                  f2 = 120, f6 = 97, del = 117;
    struct Row {
        const char* name;
        KeyPress press;
        std::vector<const char*> meanings;  // by place
    };
    // clang-format off
    const std::vector<Row> table{
        //                               list           search field   list sheet video         panel         panel field    message    label sheet name sheet editor       menu
        {"A",      press(a),            {"view",        "view",        "view",    "hot key",    "hot key",    "view",        "hot key", "view",     "view",    "view",       "view"}},
        {"B",      press(b),            {"view",        "view",        "view",    "view",       "view",       "view",        "view",    "hot key",  "view",    "view",       "view"}},
        {"Space",  press(key::space),   {"view",        "view",        "view",    "hot key",    "hot key",    "hot key",     "view",    "hot key",  "view",    "hot key",    "view"}},
        {"Shift+→",press(key::right, shift),
                                        {"view",        "view",        "view",    "hot key",    "hot key",    "view",        "view",    "hot key",  "view",    "view",       "view"}},
        {"Return", press(key::returnKey),
                                        {"view",        "view",        "view",    "view",       "view",       "view",        "view",    "view",     "view",    "hot key",    "view"}},
        {"Ctrl+Z", press(key::z, ctrl), {"takeBackDeletion","view",        "view",    "undo",       "undo",       "view",        "view",    "view",     "view",    "hot key",    "view"}},
        {"Ctrl+Shift+Z", press(key::z, ctrlShift),
                                        {"view",        "view",        "view",    "redo",       "redo",       "view",        "view",    "view",     "view",    "hot key",    "view"}},
        {"Ctrl+T", press(t, ctrl),      {"view",        "view",        "view",    "hot key",    "hot key",    "addLine",     "hot key", "view",     "view",    "addLine",    "view"}},
        {"Ctrl+C", press(key::c, ctrl), {"view",        "view",        "view",    "view",       "view",       "view",        "view",    "view",     "view",    "hot key",    "view"}},
        {"Ctrl+F", press(f, ctrl),      {"searchVideos","searchVideos","view",    "view",       "view",       "view",        "view",    "view",     "view",    "view",       "view"}},
        {"Ctrl+O", press(o, ctrl),      {"addVideo",    "addVideo",    "view",    "addVideo",   "addVideo",   "addVideo",    "view",    "view",     "view",    "addVideo",   "view"}},
        {"Ctrl+K", press(k, ctrl),      {"findCommand", "findCommand", "view",    "findCommand","findCommand","findCommand", "view",    "view",     "view",    "findCommand","view"}},
        {"Ctrl+,", press(comma, ctrl),  {"settings",    "settings",    "view",    "settings",   "settings",   "settings",    "view",    "view",     "view",    "settings",   "view"}},
        {"Ctrl+Q", press(q, ctrl),      {"quit",        "quit",        "quit",    "quit",       "quit",       "quit",        "quit",    "quit",     "quit",    "quit",       "view"}},
        {"F1",     press(f1),           {"showKeys",    "showKeys",    "view",    "showKeys",   "showKeys",   "showKeys",    "view",    "view",     "view",    "showKeys",   "view"}},
        {"F2",     press(f2),           {"renameVideo", "renameVideo", "view",    "renameLine", "renameLine", "renameLine",  "view",    "view",     "view",    "renameLine", "view"}},
        {"F6",     press(f6),           {"nextWindow",  "nextWindow",  "view",    "nextWindow", "nextWindow", "nextWindow",  "view",    "view",     "view",    "nextWindow", "view"}},
        {"Delete", press(del),          {"deleteVideo", "view",        "view",    "view",       "view",       "view",        "view",    "view",     "view",    "view",       "view"}},
        {"Alt+Backspace", press(key::deleteKey, alt),
                                        {"view",        "view",        "view",    "removeStamp","removeStamp","view",        "view",    "view",     "view",    "removeStamp","view"}},
    };
    // clang-format on
    for (const Row& row : table)
        for (std::size_t place = 0; place < row.meanings.size(); ++place)
            EXPECT_EQ(meaning(static_cast<Place>(place), row.press), row.meanings[place])
                << row.name << " at place " << place;
}

// A press on another layout: the place of the key and what it types.
KeyPress typed(int code, const char* characters, KeyModifiers modifiers = {}) {
    return {code, modifiers, characters};
}

TEST_F(KeyTableTest, CommandsGoByTheLetterAndHotKeysByThePlace) {
    constexpr int a = 0, q = 12, w = 13, y = 16, m = 46, slash = 44, num0 = 82;
    struct Row {
        const char* name;
        KeyPress press;
        Place place;
        const char* meaning;
    };
    const std::vector<Row> table{
        {"French Ctrl+Z", typed(w, "z", ctrl), video, "undo"},
        {"French Ctrl+Shift+Z", typed(w, "Z", ctrlShift), video, "redo"},
        {"French Ctrl+W", typed(key::z, "w", ctrl), video, "closeProject"},
        {"French Ctrl+A in a field", typed(q, "a", ctrl), searchField, "view"},
        {"French Ctrl+Q in a field", typed(a, "q", ctrl), searchField, "quit"},
        {"French Ctrl+,", typed(m, ",", ctrl), video, "settings"},
        {"French Ctrl+à, the place of the digit", typed(29, "à", ctrl), video, "normalSpeed"},
        {"French Q", typed(a, "q"), video, "hot key"},
        {"German Ctrl+Z", typed(y, "z", ctrl), video, "undo"},
        {"German Ctrl+Z in a field", typed(y, "z", ctrl), panelField, "view"},
        {"German Ctrl+Y", typed(key::z, "y", ctrl), video, "redo"},
        {"German Ctrl+-", typed(slash, "-", ctrl), video, "zoomOut"},
        {"German Ctrl+<", typed(key::besideLeftShift, "<", ctrl), video, "view"},
        {"Russian Ctrl+Z", typed(key::z, "я", ctrl), video, "undo"},
        {"Russian Ctrl+A in a field", typed(a, "ф", ctrl), searchField, "view"},
        {"Russian Ctrl+Q", typed(q, "й", ctrl), video, "quit"},
        {"Russian A", typed(a, "ф"), video, "hot key"},
        {"Ctrl+0 of the keypad", typed(num0, "0", ctrl), video, "view"},
    };
    for (const Row& row : table)
        EXPECT_EQ(meaning(row.place, row.press), row.meaning) << row.name;
}

TEST_F(KeyTableTest, AFieldThatRecordsAKeyGetsThemAll) {
    KeySituation at{.window = CommandScope::everywhere};
    EXPECT_EQ(router.decide(press(12, ctrl), at).command, Command::quit);
    EXPECT_EQ(router.decide(press(key::z, ctrl), at).command, std::nullopt);
    at.records = true;
    EXPECT_EQ(router.decide(press(12, ctrl), at).meaning, KeyRouter::Meaning::view);
}

TEST_F(KeyTableTest, AFocusedButtonOfAProjectNeverTakesTheSpaceKey) {
    const KeySituation at{.window = CommandScope::project};
    windows.project = true;
    events.post(events::AddLineSheetAppeared{});  // over another window
    EXPECT_EQ(router.decide(press(key::space), at).meaning, KeyRouter::Meaning::nothing);
    EXPECT_EQ(router.decide(press(key::space, ctrl), at).meaning, KeyRouter::Meaning::nothing);
    EXPECT_EQ(router.decide(press(key::space), {.window = CommandScope::list}).meaning,
              KeyRouter::Meaning::view);
}

TEST_F(KeyTableTest, AHeldKeyRepeatsOnlyWhatIsMeantToRepeat) {
    EXPECT_EQ(meaning(video, press(key::z, ctrl), true), "undo");
    EXPECT_EQ(meaning(video, press(97), true), "nothing");
    EXPECT_EQ(meaning(video, press(0), true), "hot key");
}

TEST_F(KeyTableTest, ACommandThatIsNotEnabledLeavesItsKeyToTheView) {
    bound.clear();
    EXPECT_EQ(meaning(video, press(key::z, ctrl)), "view");
    EXPECT_FALSE(router.handle(press(key::z, ctrl), {.window = CommandScope::project}));
}

}  // namespace
}  // namespace tembrix
