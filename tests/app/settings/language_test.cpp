#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSet>

#include "app/settings/settings_window.h"

namespace tembrix {
namespace {

// What a user or a screen reader reads in a window. Texts of the user's data are among them.
QStringList readTexts(const QWidget& window) {
    QStringList read{window.windowTitle()};
    for (const QObject* part : window.findChildren<QObject*>())
        for (const char* property : {"text", "toolTip", "accessibleName", "accessibleDescription",
                                     "placeholderText", "title", "statusTip"})
            if (const QVariant value = part->property(property); value.isValid())
                read << value.toString().remove('&');
    return read;
}

// The keys of texts that stand there without the sign of the new language.
QStringList keysLeft(const QWidget& window) {
    QFile file(TEMBRIX_RESOURCES "/texts/en.json");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList list = QJsonDocument::fromJson(file.readAll()).object().keys();
    const QSet<QString> known(list.begin(), list.end());
    static const QRegularExpression word(QStringLiteral("(?<!ru:)\\b[a-zA-Z0-9]{5,}\\b"));
    QStringList left;
    for (const QString& text : readTexts(window))
        for (auto match = word.globalMatch(text); match.hasNext();)
            if (const QString found = match.next().captured(); known.contains(found))
                left << found + " in " + text;
    left.removeDuplicates();
    return left;
}

struct Language : SettingsWindow {
    Subscription chosen = settings.values.observe([this](const SettingsValues& values) {
        program.locale.language = values.language.empty() ? "en" : values.language;
        program.texts.speak(values.language == "ru" ? "ru:" : "");
    });
};

TEST_F(Language, ChangesInAllWindowsAtOnceAndTheProjectStaysAsItIs) {
    openProject();
    Project* project = windows.project();
    project->timeline.addLine("Moments");
    core.tagLibrary.selectStandardCollection("Hockey");
    core.tagLibrary.toggleTimeEvent(core.tagLibrary.active->timeEvents.front().id);
    const auto events = *core.tagLibrary.selectedTimeEvents;
    const auto line = *project->timeline.selectedLineID;
    const auto* surface = window("video")->findChild<QLabel*>("videoPlayerPicture");

    auto* choice = child<QComboBox>(open(0), "settingsLanguage");
    QTest::keyClick(choice, Qt::Key_End);
    program.scheduler.run();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_EQ(settings.values->language, "ru");

    for (const char* name : {"video", "timelines", "tagLibrary", "settings"}) {
        EXPECT_EQ(keysLeft(*window(name)).join("\n").toStdString(), "") << name;
        EXPECT_TRUE(window(name)->windowTitle().startsWith(QString("ru:") + name)) << name;
    }
    EXPECT_EQ(windows.project(), project);
    EXPECT_EQ(surface, window("video")->findChild<QLabel*>("videoPlayerPicture"));
    EXPECT_EQ(*project->player.status, PlayerStatus::playing);
    EXPECT_EQ(*project->timeline.selectedLineID, line);
    EXPECT_TRUE(core.commands.isEnabled(Command::undo));
    EXPECT_EQ(*core.tagLibrary.selectedStandardCollectionName, "Хоккей");
    EXPECT_EQ(*core.tagLibrary.selectedTimeEvents, events);
    EXPECT_TRUE(project->hotkeys.registeredHotkeys().size() > 3);

    settings.reset(SettingsPage::general);
    EXPECT_EQ(window("settings")->windowTitle(), "settings");
    EXPECT_EQ(*core.tagLibrary.selectedStandardCollectionName, "Hockey");
}

}  // namespace
}  // namespace tembrix
