#include <map>

#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/key_capture.h"
#include "fakes/collections_fixture.h"

namespace tembrix {
namespace {

struct Transport final : KeyTransport {
    int toggles = 0;
    double time = 10;
    std::vector<double> seeks;
    void togglePlayPause() override { ++toggles; }
    double transportTime() const override { return time; }
    void seek(double seconds) override { seeks.push_back(seconds); }
};

struct Windows final : KeyWindows {
    bool controlOrLibrary = true, project = true, viewer = false;
    bool isControlOrLibraryKey() const override { return controlOrLibrary; }
    bool isProjectWindowActive() const override { return project; }
    bool isViewerActive() const override { return viewer; }
};

KeyPress press(int code, KeyModifiers modifiers = {}, std::string characters = "") {
    return {code, modifiers, std::move(characters)};
}
constexpr KeyModifiers shift{.shift = true};
constexpr KeyModifiers command{.command = true};

struct HotKeys : CollectionsFixture {
    Transport transport;
    Windows windows;
    FocusStateManager focus;
    Settings settings{defaults, log};
    HotKeyManager hotkeys{events, scheduler, focus, transport, settings};
    std::shared_ptr<std::vector<events::ShowLabelSheet>> sheets = record<events::ShowLabelSheet>();

    HotKeys() { hotkeys.setKeyWindows(&windows); }

    // The names of the tags for which a press opens a sheet.
    std::string pressed(const KeyPress& key) {
        sheets->clear();
        const bool taken = hotkeys.handleKeyDown(key);
        scheduler.run();
        if (sheets->empty())
            return taken ? "taken" : "";
        return sheets->back().tag.name;
    }
};

TEST(HotKeyForms, LivePressesAndCapturesOfTheSameKeyMeetInOneForm) {
    struct Case {
        KeyPress press;
        const char* captured;
        const char* lookup;
    };
    const Case cases[] = {
        {press(0, {}, "a"), "A", "a"},
        {press(0, shift, "A"), "⇧+A", "shift+a"},
        {press(22, {}, "6"), "6", "6"},
        {press(23, {}, "5"), "5", "5"},
        {press(36, {}, "\r"), "Return", "key-36"},
        {press(96, {.function = true}, "\uF708"), "Fn+F5", "key-96"},
        {press(96, {.control = true}, "\uF708"), "⌃+F5", "ctrl+key-96"},
        {press(121, {}, "\uF72D"), "Page Down", "key-121"},
        {press(8, {.control = true, .option = true, .shift = true, .command = true}, "c"),
         "⌘+⌥+⌃+⇧+C", "ctrl+alt+shift+cmd+c"},
        {press(24, shift, "+"), "⇧++", "shift+="},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(keyString(one.press), one.lookup);
        EXPECT_EQ(capturedForm(one.press), one.captured);
        EXPECT_EQ(canonicalHotkey(one.captured), one.lookup) << one.captured;
        EXPECT_EQ(canonicalHotkey(one.lookup), one.lookup);
    }
    EXPECT_EQ(capturedForm(press(10)), "Key(10)");
    EXPECT_EQ(canonicalHotkey("Key(10)"), "key-10");
    EXPECT_EQ(canonicalHotkey("cmd+Shift+A"), "shift+cmd+a");
    // A key that types the name of another key is recorded by its number. Keys that type nothing
    // visible have names.
    EXPECT_EQ(capturedForm(press(10, {}, "<")), "Key(10)");
    EXPECT_EQ(canonicalHotkey(capturedForm(press(117, shift, "\uF728"))), "shift+key-117");
    const std::map<std::string, std::string> captions{
        {"shift+a", "⇧A"},    {"Fn+F5", "F5"},
        {"key-36", "Return"}, {"⌘+⇧+\uF728", "Ctrl+⇧Del"},
        {"\x03", "Enter"},    {"⌘+Delete", "Ctrl+Backspace"},
        {"⌘", "Ctrl"},        {"", ""}};
    for (const auto& [stored, caption] : captions)
        EXPECT_EQ(hotkeyCaption(stored), caption);
}

TEST(HotKeyForms, KeysGoByTheirPlaceOnARussianLayoutToo) {
    // Keys that type letters on a Russian layout and punctuation on an English one, and the two
    // that conflict.
    const std::map<int, std::string> typed{{30, "ъ"}, {33, "х"}, {39, "э"}, {41, "ж"}, {43, "б"},
                                           {47, "ю"}, {50, "ё"}, {44, "."}, {42, "\\"}};
    for (const auto& [code, characters] : typed)
        EXPECT_EQ(canonicalHotkey(capturedForm(press(code, {}, characters))),
                  keyString(press(code)))
            << characters;
    EXPECT_EQ(canonicalHotkey(capturedForm(press(44, shift, ","))), "shift+/");
}

TEST_F(HotKeys, EveryStoredFormReachesItsTagAndTheLaterTagWins) {
    hotkeys.registerHotkeys(
        {makeTag("1", "first", "a"), makeTag("2", "plain", "A"), makeTag("3", "command", "⌘+A"),
         makeTag("4", "return", "Return"), makeTag("5", "function", "Fn+F5"),
         makeTag("6", "lookup", "shift+z"), makeTag("7", "section", "§"), makeTag("8", "one", "1"),
         makeTag("9", "none", ""), makeTag("10", "key pad", capturedForm(press(84, {}, "2")))},
        TagCollection::user("Mine", "1"));
    EXPECT_EQ(pressed(press(0)), "plain");
    EXPECT_EQ(pressed(press(0, command)), "command");
    EXPECT_EQ(pressed(press(36)), "return");
    EXPECT_EQ(pressed(press(96, {.function = true})), "function");
    EXPECT_EQ(pressed(press(96)), "function");
    EXPECT_EQ(pressed(press(6, shift)), "lookup");
    EXPECT_EQ(pressed(press(6)), "");
    EXPECT_EQ(pressed(press(10, {}, "§")), "section") << "a key that has only its character";
    EXPECT_EQ(pressed(press(18, {}, "1")), "one");
    EXPECT_EQ(pressed(press(83, {}, "1")), "") << "the key pad is not the digit row";
    EXPECT_EQ(pressed(press(84, {}, "2")), "key pad") << "but answers to its own recording";
    EXPECT_EQ(hotkeys.activeCollection(), TagCollection::user("Mine", "1"));

    // The event is posted two turns of the main queue after the press.
    sheets->clear();
    EXPECT_TRUE(hotkeys.handleKeyDown(press(0)));
    scheduler.step();
    EXPECT_TRUE(sheets->empty());
    scheduler.step();
    EXPECT_EQ(sheets->size(), 1u);

    hotkeys.clearHotkeys();
    EXPECT_EQ(pressed(press(0)), "");
}

TEST_F(HotKeys, AKeyWithoutACodeIsNotEveryKeyWithoutACode) {
    EXPECT_EQ(capturedForm(press(-1)), "");
    EXPECT_EQ(capturedForm(press(-1, command)), "");
    const std::string slash = capturedForm(press(-1, {}, "/"));
    EXPECT_EQ(hotkeyCaption(slash), "/");
    auto own = makeTag("own", "own");
    own.labelHotkeys.emplace()["any"] = "Key(-1)";  // as it was recorded once, of no particular key
    hotkeys.registerHotkeys({makeTag("slash", "slash", slash), makeTag("yen", "yen", "¥"),
                             makeTag("any", "any", "Key(-1)"), own},
                            TagCollection::standard());
    EXPECT_EQ(pressed(press(-1, {}, "/")), "slash");
    EXPECT_EQ(pressed(press(-1, {}, "¥")), "yen");
    EXPECT_EQ(pressed(press(-1, shift, "¥")), "");
    EXPECT_EQ(pressed(press(-1, {}, "ÿ")), "");
    EXPECT_EQ(pressed(press(-1)), "") << "a volume key";
    hotkeys.beginLabelChoice("own");
    EXPECT_EQ(pressed(press(-1)), "");
}

TEST_F(HotKeys, GatesHoldKeysBack) {
    hotkeys.registerHotkeys({makeTag("1", "tag", "a")}, TagCollection::standard());
    const auto silent = [&](const char* why) { EXPECT_EQ(pressed(press(0)), "") << why; };
    focus.setTextFieldFocused(true);
    silent("a text field has the keyboard");
    EXPECT_TRUE(hotkeys.handleKeyDown(press(key::space))) << "the panel's space goes on";
    windows.controlOrLibrary = false;
    EXPECT_FALSE(hotkeys.handleKeyDown(press(key::space))) << "elsewhere the text has it";
    windows.controlOrLibrary = true;
    focus.setTextFieldFocused(false);

    events.post(events::CollectionEditorOpened{});
    silent("the collection editor is open");
    EXPECT_FALSE(hotkeys.handleKeyDown(press(key::space)));
    events.post(events::CollectionEditorClosed{});

    events.post(events::AddLineSheetAppeared{});
    silent("a sheet with a text field");
    EXPECT_FALSE(hotkeys.takes(press(key::space)));
    events.post(events::EditTimelineSheetAppeared{});
    events.post(events::SheetDismissed{});

    windows.project = false;
    silent("another window");
    windows.project = true;
    EXPECT_TRUE(hotkeys.takes(press(0)) && hotkeys.takes(press(key::space)));  // and has no effect
    EXPECT_EQ(pressed(press(0)), "tag");
    EXPECT_EQ(transport.toggles, 1);
}

TEST_F(HotKeys, TheDrawingEditorReceivesItsKeysUnlessATextBoxHasTheFocus) {
    hotkeys.registerHotkeys({makeTag("1", "tag", "a")}, TagCollection::standard());
    const auto enters = record<events::EditorEnterKeyPressed>();
    const auto copies = record<events::EditorCopyKeyPressed>();
    const auto pastes = record<events::EditorPasteKeyPressed>();
    const auto undos = record<events::EditorUndoKeyPressed>();
    events.post(events::EditorModeChanged{true});
    events.post(events::EditorModeChanged{});  // without a flag
    const auto all = {press(36), press(8, command), press(9, command), press(6, command)};
    for (const auto& one : all)
        EXPECT_TRUE(hotkeys.handleKeyDown(one));
    EXPECT_EQ(pressed(press(0)), "");
    events.post(events::TextBoxEditingChanged{true});
    for (const auto& one : all)
        EXPECT_FALSE(hotkeys.handleKeyDown(one));
    EXPECT_EQ(enters->size() + copies->size() + pastes->size() + undos->size(), 4u);
    EXPECT_TRUE(hotkeys.handleKeyDown(press(key::space))) << "the panel's space goes on";
    events.post(events::TextBoxEditingChanged{false});
    events.post(events::EditorModeChanged{false});
    EXPECT_EQ(pressed(press(0)), "tag");
}

TEST_F(HotKeys, TransportKeysServeThePlayerOrTheViewer) {
    EXPECT_TRUE(hotkeys.handleKeyDown(press(key::right, shift)));
    EXPECT_TRUE(hotkeys.handleKeyDown(press(key::left, {.option = true, .shift = true})));
    EXPECT_FALSE(hotkeys.handleKeyDown(press(key::right)));
    EXPECT_EQ(transport.seeks, (std::vector<double>{13, 7}));
    settings.change([](SettingsValues& values) { values.keySeekStep = 2.5; });
    hotkeys.handleKeyDown(press(key::right, shift));
    EXPECT_EQ(transport.seeks.back(), 12.5);
    windows.controlOrLibrary = windows.project = false;
    windows.viewer = true;
    const auto toggles = record<events::ToggleViewerPlayer>();
    const auto forward = record<events::SeekViewerPlayerForward>();
    const auto backward = record<events::SeekViewerPlayerBackward>();
    for (const auto& one : {press(key::space), press(key::right, shift), press(key::left, shift)})
        EXPECT_TRUE(hotkeys.handleKeyDown(one));
    EXPECT_EQ(toggles->size() + forward->size() + backward->size(), 3u);
    EXPECT_EQ(transport.toggles, 0);
}

TEST_F(HotKeys, LabelModeGivesTheTagInHandItsOwnKeys) {
    auto shot = makeTag("shot", "Shot", "a");
    shot.labelHotkeys = {{"own", "1"}, {"head", "⇧+H"}};
    auto pass = makeTag("pass", "Pass");
    pass.labelHotkeys = {{"long", "1"}, {"unused", ""}};
    hotkeys.registerHotkeys({shot, pass}, TagCollection::standard());
    const auto labels = record<events::LabelHotkeyPressed>();
    const auto any = hotkeys.beginLabelChoice({});
    EXPECT_EQ(pressed(press(0)), "") << "tag keys stay silent";
    EXPECT_TRUE(hotkeys.handleKeyDown(press(4, shift)));
    EXPECT_EQ(*hotkeys.hotKeySelectedLabelId, "head");
    EXPECT_TRUE(hotkeys.handleKeyDown(press(18)));
    EXPECT_EQ(labels->back().tagId, "pass") << "the later tag has a shared key";
    const auto ofShot = hotkeys.beginLabelChoice("shot");
    EXPECT_TRUE(hotkeys.handleKeyDown(press(18)));
    EXPECT_EQ(labels->back().labelId, "own");
    EXPECT_EQ(labels->back().tagId, "shot");
    hotkeys.endLabelChoice(ofShot);
    EXPECT_TRUE(hotkeys.hasLabelKeys(any)) << "the choice that is left has them again";
    EXPECT_TRUE(hotkeys.handleKeyDown(press(18)));
    EXPECT_EQ(labels->back().tagId, "pass");
    hotkeys.endLabelChoice(any);
    EXPECT_FALSE(hotkeys.handleKeyDown(press(18)));
}

TEST(HotKeyConflicts, AreExactTextComparisons) {
    const std::vector<Tag> tags{makeTag("1", "one", "A"), makeTag("2", "two", "")};
    EXPECT_TRUE(isHotkeyUsed(tags, "A"));
    EXPECT_FALSE(isHotkeyUsed(tags, "a"));
    EXPECT_FALSE(isHotkeyUsed(tags, ""));
    EXPECT_FALSE(isHotkeyUsed(tags, std::nullopt));
    EXPECT_FALSE(isHotkeyUsed(tags, "A", "1"));
}

TEST(KeyCaptureTest, RecordsKeysAndHeldModifiers) {
    VirtualScheduler scheduler;
    KeyCapture capture(scheduler);
    capture.keyDown(press(0, {}, "a"));
    EXPECT_FALSE(capture.keyString->has_value()) << "not capturing";

    capture.start();
    capture.keyDown(press(123, {}, "\uF702"));
    capture.keyDown(press(200));
    EXPECT_FALSE(capture.keyString->has_value()) << "arrows and silent keys are not recorded";
    capture.keyDown(press(0, command, "a"));
    EXPECT_EQ(**capture.keyString, "⌘+A");
    EXPECT_TRUE(*capture.isCapturing);
    scheduler.advance(0.05);
    EXPECT_FALSE(*capture.isCapturing);

    // A value set by other code in the meantime is replaced by the old one.
    capture.start();
    capture.keyDown(press(1, {}, "s"));
    capture.setKeyString("other");
    scheduler.advance(0.05);
    EXPECT_EQ(**capture.keyString, "⌘+A");

    // A second key right after the first one is ignored.
    capture.start();
    capture.keyDown(press(1, {}, "s"));
    scheduler.advance(0.02);
    capture.keyDown(press(2, {}, "d"));
    scheduler.advance(0.05);
    EXPECT_FALSE(*capture.isCapturing);
    EXPECT_EQ(**capture.keyString, "S");
    capture.setKeyString("⌘+A");

    // The last capture ended while its modifier was held; releasing that is not recorded.
    capture.start();
    capture.keyDown(press(0, command, "a"));
    scheduler.advance(0.05);
    capture.start();
    capture.modifiersChanged(shift);
    capture.modifiersChanged({});
    EXPECT_EQ(**capture.keyString, "⌘+A") << "one modifier alone writes nothing";
    capture.modifiersChanged(command);
    capture.modifiersChanged({.shift = true, .command = true});
    capture.modifiersChanged(command);
    EXPECT_EQ(**capture.keyString, "⌘");
    scheduler.advance(0.1);
    EXPECT_FALSE(*capture.isCapturing);

    capture.start();
    capture.focusLost();
    scheduler.run();
    EXPECT_FALSE(*capture.isCapturing);
}

TEST(KeyCaptureTest, ReleasingAModifierRecordsTheOnesStillHeld) {
    VirtualScheduler scheduler;
    KeyCapture capture(scheduler);
    for (const auto released : {&KeyModifiers::control, &KeyModifiers::option, &KeyModifiers::shift,
                                &KeyModifiers::command, &KeyModifiers::function}) {
        KeyModifiers held = released == &KeyModifiers::command ? shift : command;
        const std::string expected = held.command ? "⌘" : "⇧";
        capture.setKeyString("old");
        capture.start();
        capture.modifiersChanged(held);
        held.*released = true;
        capture.modifiersChanged(held);
        EXPECT_EQ(**capture.keyString, "old") << "nothing was released";
        held.*released = false;
        capture.modifiersChanged(held);
        EXPECT_EQ(**capture.keyString, expected);
        scheduler.advance(0.1);
        EXPECT_FALSE(*capture.isCapturing);
    }
}

}  // namespace
}  // namespace tembrix
