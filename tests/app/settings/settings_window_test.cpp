#include "app/settings/settings_window.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QTreeWidget>

#include "core/keyboard/hot_key_codes.h"

namespace tembrix {
namespace {

struct SettingsWindowTest : SettingsWindow {
    void choose(QWidget& shown, Command command) const {
        auto* rows = child<QTreeWidget>(shown, "settingsKeysList");
        const QString name = QString::fromStdString(core.commands.name(command, program.texts));
        rows->setCurrentItem(rows->findItems(name, Qt::MatchExactly | Qt::MatchRecursive).front());
        rows->setFocus();
    }
    void record(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        strike(Qt::Key_Return);
        strike(key, modifiers);
        program.scheduler.advance(1);
    }
    static QString warning(QWidget& shown, const char* name) {
        auto* label = child<QLabel>(shown, name);
        return label->isVisible() ? label->text() : QString();
    }
};

TEST_F(SettingsWindowTest, ItsKeyOpensOneWindowAndEscapeClosesIt) {
    openProject();
    strike(Qt::Key_Comma, Qt::ControlModifier);
    QWidget* shown = window("settings");
    ASSERT_TRUE(shown);
    ASSERT_TRUE(activate(*shown));
    EXPECT_EQ(unnamedControls(*shown), QStringList());
    strike(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(window("settings"), shown);
    strike(Qt::Key_Space);
    EXPECT_EQ(*windows.project()->player.status, PlayerStatus::playing) << "not a match window";
    strike(Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([] { return !window("settings"); }));
    EXPECT_TRUE(windows.project());
}

TEST_F(SettingsWindowTest, ItsPageOfKeysListsWhatWorksInIt) {
    open(0);
    strike(Qt::Key_F1);
    QWidget* sheet = QApplication::activeModalWidget();
    ASSERT_TRUE(sheet);
    const auto* rows = child<QTreeWidget>(*sheet, "keysTitle");
    const auto lists = [&](const char* command) {
        return !rows->findItems(command, Qt::MatchContains).isEmpty();
    };
    EXPECT_TRUE(lists("commandFindCommand"));
    EXPECT_FALSE(lists("commandDeleteVideo"));
    EXPECT_FALSE(lists("videoControlPlayPause"));
}

TEST_F(SettingsWindowTest, ValuesAreStoredAtOnceAndAPageIsReset) {
    QWidget& shown = open(1);
    child<QCheckBox>(shown, "settingsPlaysOnOpening")->click();
    auto* step = child<QDoubleSpinBox>(shown, "settingsSmallSeekStep");
    step->setValue(2.5);
    EXPECT_FALSE(Settings(program.defaults, program.log).values->playsOnOpening);
    EXPECT_EQ(Settings(program.defaults, program.log).values->smallSeekStep, 2.5);
    settings.change([](SettingsValues& values) { values.volume = 30; });
    EXPECT_EQ(child<QAbstractSlider>(shown, "settingsVolume")->value(), 30);
    child<QAbstractButton>(shown, "settingsReset.settingsPlayback")->click();
    EXPECT_EQ(step->value(), 5);
    EXPECT_EQ(*settings.values, SettingsValues());
}

TEST_F(SettingsWindowTest, AWrongAddressIsNotStoredAndSaysWhy) {
    QWidget& shown = open(2);
    auto* server = child<QLineEdit>(shown, "settingsReportServer");
    QTest::keyClicks(server, "https://a.example:80");
    EXPECT_EQ(settings.values->reportServer, "https://a.example:80");
    QTest::keyClicks(server, "0000");
    EXPECT_EQ(warning(shown, "settingsReportServer.fault"), "addressHasBadPort");
    EXPECT_EQ(server->text(), "https://a.example:800000");
    EXPECT_EQ(settings.values->reportServer, "https://a.example:8000");
    server->selectAll();
    QTest::keyClick(server, Qt::Key_Delete);
    EXPECT_EQ(warning(shown, "settingsReportServer.fault"), "");
    EXPECT_EQ(settings.values->reportServer, "");
}

TEST_F(SettingsWindowTest, TheExportFolderIsChosenAndChecked) {
    QWidget& shown = open(2);
    const auto choose = [&](const std::filesystem::path& folder) {
        child<QAbstractButton>(shown, "settingsChooseFolder")->click();
        program.panels.answerOpen({folder});
    };
    choose(program.folder.path());
    EXPECT_EQ(settings.values->exportFolder, program.folder.path().string());
    EXPECT_EQ(warning(shown, "settingsExportFolder.fault"), "");
    choose(program.folder.path() / "gone");
    EXPECT_EQ(warning(shown, "settingsExportFolder.fault"), "settingsFolderMissing");
    child<QAbstractButton>(shown, "settingsClearFolder")->click();
    EXPECT_EQ(settings.values->exportFolder, "");
}

TEST_F(SettingsWindowTest, ANewKeyWorksAtOnceAndAfterARestart) {
    openProject();
    windows.project()->timeline.addLine("Moments");
    QWidget& shown = open(3);
    choose(shown, Command::undo);
    record(Qt::Key_F7);
    EXPECT_EQ(core.commandKeys.keys(Command::undo),
              (std::vector<std::string>{"cmd+z", canonicalHotkey("F7")}));
    ASSERT_TRUE(activate(*window("timelines")));
    strike(Qt::Key_F7);
    EXPECT_FALSE(core.commands.isEnabled(Command::undo)) << "it is undone";
    EXPECT_EQ(CommandKeys(program.defaults, program.log)
                  .commandFor(canonicalHotkey("F7"), CommandScope::project),
              Command::undo);

    ASSERT_TRUE(activate(shown));
    child<QAbstractButton>(shown, "keyEditorRemove.cmd+z")->click();
    EXPECT_EQ(core.commandKeys.caption(Command::undo), "F7");
    child<QAbstractButton>(shown, "settingsReset.settingsKeys")->click();
    EXPECT_EQ(core.commandKeys.caption(Command::undo), "Ctrl+Z");
}

TEST_F(SettingsWindowTest, AKeyInUseIsAskedAboutBeforeItIsTaken) {
    for (const char* key : {"keyOfCommand", "keyOfTag"})
        program.texts.set(key, std::string(key) + " {0} {1}");
    QWidget& shown = open(3);
    choose(shown, Command::undo);
    const auto conflict = [&] { return warning(shown, "keyEditorConflict").toStdString(); };
    record(Qt::Key_Q, Qt::ControlModifier);  // quits elsewhere
    EXPECT_EQ(conflict(), "keyOfCommand Ctrl+Q macQuitAppTitle");
    child<QAbstractButton>(shown, "keyEditorLeave")->click();
    EXPECT_EQ(core.commandKeys.caption(Command::quit), "Ctrl+Q");

    choose(shown, Command::undo);
    record(Qt::Key_T, Qt::ControlModifier);
    child<QAbstractButton>(shown, "keyEditorTake")->click();
    EXPECT_EQ(core.commandKeys.commandFor("cmd+t", CommandScope::project), Command::undo);
    EXPECT_TRUE(core.commandKeys.keys(Command::addLine).empty());

    const auto& tags = core.tagLibrary.active->tags;
    const auto tag = std::find_if(tags.begin(), tags.end(), [](const Tag& one) {
        return canonicalHotkey(one.hotkey.value_or("")) == "n";
    });
    ASSERT_NE(tag, tags.end());
    choose(shown, Command::redo);
    record(Qt::Key_N);
    EXPECT_TRUE(conflict().starts_with("keyOfTag N " + tag->name)) << conflict();

    choose(shown, Command::zoomIn);
    record(Qt::Key_Tab);
    EXPECT_EQ(conflict(), "keyBelongsToControls");
    EXPECT_FALSE(child<QAbstractButton>(shown, "keyEditorTake")->isVisible());
    record(Qt::Key_Escape);
    EXPECT_EQ(conflict(), "");
    EXPECT_FALSE(core.commandKeys.isChanged(Command::zoomIn));
}

}  // namespace
}  // namespace tembrix
