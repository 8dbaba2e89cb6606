#include "app/marking/tag_library_view.h"

#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

#include "app/control/control_project.h"
#include "app/marking/tag_button.h"
#include "app/marking/time_event_chip.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/stamp_items_sheet.h"
#include "app/window_tests.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/marking/marking_flow.h"

namespace tembrix {
namespace {

struct NoMap final : FieldMapQuestion {
    void openFieldMapSelection(const Tag&, const Bytes&, std::function<void(Point)>) override {}
};

struct PanelHasTheKeyboard final : KeyWindows {
    bool isControlOrLibraryKey() const override { return true; }
    bool isProjectWindowActive() const override { return true; }
    bool isViewerActive() const override { return false; }
};

class TagLibraryViewTest : public testing::Test {
  protected:
    TagLibraryViewTest() { open("en"); }
    ~TagLibraryViewTest() override { close(); }

    void open(const QString& language) {
        close();
        app = std::make_unique<ControlProject>(language);
        app->hotkeys.setKeyWindows(&windows);
        app->timeline.selectLine(addLine("Moments"));
        flow = std::make_unique<MarkingFlow>(app->timeline, app->tagLibrary, app->markupModes,
                                             app->collections, app->player, map, app->scheduler,
                                             app->events);
        view = std::make_unique<TagLibraryView>(
            TagPanelServices{app->timeline, app->tagLibrary, app->player, app->hotkeys, app->events,
                             app->core.commands, app->core.settings, app->panels, app->texts},
            *flow);
        view->resize(640, 560);
        view->show();
        view->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(view.get()));
        app->settle(1);
    }
    void close() {
        view.reset();
        flow.reset();
        app.reset();
    }
    Uuid addLine(const std::string& name) { return app->addLine(name); }

    TagButton* tag(const char* id) { return child<TagButton>(*view, id); }
    QComboBox* chooser() { return child<QComboBox>(*view, "tagLibraryCollections"); }
    StampItemsSheet* sheet() { return view->findChild<StampItemsSheet*>(); }
    void click(QWidget* widget) {
        ASSERT_NE(widget, nullptr);
        QTest::mouseClick(widget, Qt::LeftButton);
        app->settle();
    }
    void hotkey(int code, KeyModifiers modifiers = {}) {
        EXPECT_TRUE(app->hotkeys.handleKeyDown({code, modifiers, ""}));
        app->settle();
    }
    void playTo(double seconds) {
        app->players.player()->advanceTo(seconds);
        app->settle();
    }
    std::vector<TimelineStamp> stamps() {
        std::vector<TimelineStamp> all;
        for (const auto& line : *app->timeline.lines)
            for (const auto& stamp : line->stamps)
                all.push_back(*stamp);
        return all;
    }
    void choose(const QString& name) {
        const int index = chooser()->findText(name);
        ASSERT_GE(index, 0);
        chooser()->setCurrentIndex(index);
        Q_EMIT chooser()->activated(index);
        app->settle();
    }
    bool allows(const QString& name) {
        const auto* model = qobject_cast<QStandardItemModel*>(chooser()->model());
        return model->item(chooser()->findText(name))->isEnabled();
    }

    NoMap map;
    PanelHasTheKeyboard windows;
    std::unique_ptr<ControlProject> app;
    std::unique_ptr<MarkingFlow> flow;
    std::unique_ptr<TagLibraryView> view;
};

TEST_F(TagLibraryViewTest, AMousePressWithoutLabelsMakesAStamp) {
    app->player.play();
    playTo(30);
    click(child(*view, "football.event.half1"));
    EXPECT_TRUE(child<TimeEventChip>(*view, "football.event.half1")->isChecked());
    click(tag("football.tag.note"));
    ASSERT_EQ(stamps().size(), 1u);
    EXPECT_EQ(stamps()[0].label, "Note");
    EXPECT_DOUBLE_EQ(stamps()[0].timeStartSeconds, 22);
    EXPECT_EQ(stamps()[0].timeEvents, std::vector<std::string>{"football.event.half1"});
    EXPECT_EQ(tag("football.tag.note")->accessibleDescription(), "Marked: 1");
    EXPECT_EQ(*app->player.status, PlayerStatus::paused);
    app->settle(0.1);
    EXPECT_EQ(*app->player.status, PlayerStatus::playing);
    EXPECT_TRUE(unnamedControls(*view).isEmpty())
        << unnamedControls(*view).join(", ").toStdString();
}

TEST_F(TagLibraryViewTest, AHotKeyAsksForLabelsByKeyAndReturnMakesTheStamp) {
    app->player.play();
    playTo(50);
    hotkey(1);  // S, a shot
    ASSERT_NE(sheet(), nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet()));
    EXPECT_EQ(*app->player.status, PlayerStatus::paused);
    EXPECT_TRUE(*app->hotkeys.isLabelHotkeyMode);
    hotkey(18);  // 1: our team, a key that many tags share
    hotkey(12);  // Q: goal
    hotkey(13);
    hotkey(13);  // selected and deselected
    picture(*sheet(), "labels-en");
    EXPECT_TRUE(child<QPushButton>(*sheet(), "football.label.team.own")->isChecked());
    QTest::keyClick(sheet(), Qt::Key_Return);
    app->settle();
    ASSERT_EQ(stamps().size(), 1u);
    const TimelineStamp shot = stamps()[0];
    EXPECT_EQ(shot.label, "Shot");
    EXPECT_EQ(std::set<std::string>(shot.labels.begin(), shot.labels.end()),
              (std::set<std::string>{"football.label.shot.goal", "football.label.team.own"}));
    EXPECT_FALSE(*app->hotkeys.isLabelHotkeyMode);
    app->settle(0.2);
    EXPECT_EQ(*app->player.status, PlayerStatus::playing);

    // Escape makes no stamp, and playback resumes.
    hotkey(1);
    ASSERT_NE(sheet(), nullptr);
    QTest::keyClick(sheet(), Qt::Key_Escape);
    app->settle();
    EXPECT_EQ(stamps().size(), 1u);
    EXPECT_EQ(*app->player.status, PlayerStatus::playing);
    EXPECT_EQ(sheet(), nullptr);
}

TEST_F(TagLibraryViewTest, WithoutATimelineTheSheetSaysSo) {
    app->timeline.deleteLine(**app->timeline.selectedLineID);
    click(tag("football.tag.shot"));
    auto* text = child(*view, "tagLibraryNoTimeline");
    ASSERT_NE(text, nullptr);
    QTest::keyClick(text->window(), Qt::Key_Return);
    app->settle();
    EXPECT_EQ(child(*view, "tagLibraryNoTimeline"), nullptr);
    EXPECT_TRUE(stamps().empty());
    EXPECT_EQ(*app->player.status, PlayerStatus::playing);
}

TEST_F(TagLibraryViewTest, ThePanelSaysWhereTheNextMarkGoesAndChangesIt) {
    auto* target = child<QToolButton>(*view, "markTarget");
    const auto moments = **app->timeline.selectedLineID;
    EXPECT_EQ(target->text(), "Moments");
    EXPECT_FALSE(target->property("doubtful").toBool());
    app->timeline.selectLine(drawingsLineId());
    EXPECT_EQ(target->accessibleDescription(), "Drawings: not meant for tags");
    EXPECT_TRUE(target->property("doubtful").toBool());
    picture(*view, "panel-drawings");

    const auto entry = [&](const std::string& name) {
        target->setFocus();
        target->menu()->popup(view->mapToGlobal(QPoint(0, 0)));
        auto* found = target->menu()->findChild<QAction*>(qtext(name));
        EXPECT_TRUE(found) << name;
        return found;
    };
    const auto choose = [&](const std::string& name) {
        target->menu()->setActiveAction(entry(name));
        QTest::keyClick(target->menu(), Qt::Key_Return);
        app->settle();
    };
    choose(moments.text());
    EXPECT_EQ(*app->timeline.selectedLineID, moments);
    const Uuid other = addLine("A & B");
    app->timeline.appendStamp(other, ControlProject::makeStamp(1, 2, "Pass", "FF0000"));
    EXPECT_TRUE(entry(other.text())->isChecked());
    target->menu()->close();
    EXPECT_EQ(target->text(), "A && B");
    EXPECT_EQ(target->icon().pixmap(12, 12).toImage().pixelColor(6, 6), QColor(255, 0, 0));
    picture(*view, "panel-line");

    // One key goes to the next timeline, never to that of the drawings.
    Commands& commands = app->core.commands;
    EXPECT_TRUE(commands.run(Command::nextLine));
    EXPECT_EQ(*app->timeline.selectedLineID, moments);
    EXPECT_TRUE(commands.run(Command::previousLine));
    EXPECT_EQ(*app->timeline.selectedLineID, other);

    app->markupModes.setMarkupMode(MarkupMode::tagBased);
    EXPECT_EQ(target->accessibleDescription(), "One timeline per tag");
    EXPECT_FALSE(commands.isEnabled(Command::nextLine));
    app->markupModes.setMarkupMode(MarkupMode::standard);
    app->timeline.deleteLine(other);
    EXPECT_EQ(target->accessibleDescription(), "No timeline: choose one");
    EXPECT_TRUE(target->property("doubtful").toBool());
}

TEST_F(TagLibraryViewTest, AnIntervalRunsUntilItsSecondPressAndLocksTheCollection) {
    app->player.play();
    playTo(10);
    auto* possession = tag("football.tag.possession");
    click(possession);
    EXPECT_TRUE(possession->isChecked());
    EXPECT_FALSE(allows("Hockey"));
    EXPECT_FALSE(child<QToolButton>(*view, "tagLibraryDeleteCollection")->isEnabled());
    EXPECT_EQ(*app->player.status, PlayerStatus::playing);
    playTo(25);
    choose("Hockey");
    EXPECT_EQ(chooser()->currentText(), "Football");
    QTest::keyClick(possession, Qt::Key_Return);
    app->settle(0.2);
    EXPECT_FALSE(possession->isChecked());
    EXPECT_FALSE(child(*view, "tagLibraryOpenIntervals")->isVisible());
    ASSERT_EQ(stamps().size(), 1u);
    EXPECT_DOUBLE_EQ(stamps()[0].timeStartSeconds, 9);
    EXPECT_DOUBLE_EQ(stamps()[0].timeFinishSeconds, 26);
    EXPECT_TRUE(allows("Hockey"));

    // An open interval can be closed in the area that is always visible.
    hotkey(6);  // Z
    click(tag("open.football.tag.possession"));
    EXPECT_FALSE(possession->isChecked());
    EXPECT_EQ(stamps().size(), 2u);
}

TEST_F(TagLibraryViewTest, TheChooserSwitchesAndDeletesCollections) {
    CustomCollectionManager mine(app->collections);
    mine.setCollectionName("Mine");
    TagFormData form;
    form.name = "Own";
    form.hexColor = "FF8800";
    const auto own = mine.addTag(form, mine.addTagGroup("Group").id);
    mine.saveCollection();
    app->settle(1);
    auto* remove = child<QToolButton>(*view, "tagLibraryDeleteCollection");
    EXPECT_TRUE(remove->isVisible());
    // If a standard collection is active, the menu lists the user's collections, including those
    // without data.
    app->index.addOrUpdateCollection("lost", "Lost & gone");
    app->events.post(events::CollectionDataChanged{});
    app->settle(1);
    choose("Lost & gone");
    EXPECT_EQ(chooser()->currentText(), "Football");
    click(remove);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->actions().size(), 2);
    picture(*menu, "delete-a-collection");
    menu->setActiveAction(view->findChild<QAction*>("lost"));
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_EQ(app->panels.answerConfirm(true),
              (FakePanels::Message{
                  "Delete the collection “Lost & gone”?",
                  "Its buttons and labels go with it. What was marked with them stays on the "
                  "timelines.",
                  "Delete"}));
    app->settle(1);
    EXPECT_EQ(chooser()->findText("Lost & gone"), -1);

    choose("Hockey");
    EXPECT_EQ(chooser()->currentText(), "Hockey");
    EXPECT_NE(tag("hockey.tag.faceOff"), nullptr);
    choose("Mine");
    app->settle();
    EXPECT_EQ(chooser()->currentText(), "Mine");
    EXPECT_TRUE(tag(own->id.c_str())->isVisible());

    form.name = "Renamed";
    mine.updateTag(own->id, form);
    mine.saveCollection();
    app->settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(tag(own->id.c_str())->text(), "Renamed");

    click(remove);
    app->panels.answerConfirm(false);
    app->settle(1);
    EXPECT_EQ(chooser()->currentText(), "Mine");
    click(remove);
    app->panels.answerConfirm(true);
    app->settle(1);
    EXPECT_EQ(chooser()->findText("Mine"), -1);
    EXPECT_EQ(chooser()->currentText(), "Football");
    EXPECT_FALSE(remove->isVisible());
}

TEST_F(TagLibraryViewTest, ADamagedCollectionShowsWhatIsReadable) {
    CollectionData data;
    data.id = "damaged";
    Tag odd;
    odd.id = "odd";
    odd.color = "no color";
    odd.defaultTimeBefore = 1e300;
    odd.defaultTimeAfter = -1;
    odd.lablesGroup = {"gone"};
    odd.hotkey = "?";
    odd.labelHotkeys.emplace()["gone"] = "1";
    data.tags = {odd, odd};
    data.tagGroups = {{"twice", "A", {"odd", "gone"}}, {"twice", "B", {"odd"}}, {"none", "", {}}};
    data.labelGroups = {{"l", "L", {"gone"}}};
    data.timeEvents = {{"event", "E"}, {"event", "F"}};
    app->storage.saveCollection(data);
    app->index.addOrUpdateCollection("damaged", "Damaged");
    app->events.post(events::CollectionDataChanged{});
    app->settle(1);
    choose("Damaged");
    EXPECT_EQ(view->findChildren<TagButton*>("odd").size(), 2);
    click(child(*view, "twice.header"));
    for (auto* button : view->findChildren<TagButton*>("odd"))
        EXPECT_FALSE(button->isVisible()) << "both groups fold by the id that they share";
    click(child(*view, "twice.header"));
    click(tag("odd"));
    ASSERT_EQ(stamps().size(), 1u);
    EXPECT_EQ(stamps()[0].idTag, "odd");
    click(child(*view, "event"));
    for (auto* chip : view->findChildren<TimeEventChip*>("event"))
        EXPECT_TRUE(chip->isChecked());
}

TEST_F(TagLibraryViewTest, GroupsFoldAndTheDrawingEditorHidesThePanel) {
    auto* header = child<QToolButton>(*view, "football.group.attack.header");
    QTest::keyClick(header, Qt::Key_Return);
    EXPECT_FALSE(tag("football.tag.goal")->isVisible());
    click(header);
    EXPECT_TRUE(tag("football.tag.goal")->isVisible());
    app->events.post(events::EditorModeChanged{true});
    click(tag("football.tag.note"));
    click(child(*view, "football.event.half1"));
    EXPECT_TRUE(stamps().empty());
    EXPECT_TRUE(app->tagLibrary.selectedTimeEvents->empty());
    picture(*view, "panel-editor");
    app->events.post(events::EditorModeChanged{false});
    EXPECT_TRUE(tag("football.tag.note")->isEnabled());
}

TEST_F(TagLibraryViewTest, AMarkLeavesTheFocusWhereItWas) {
    EXPECT_TRUE(view->hasFocus()) << "no control has it at first";
    chooser()->setFocus();
    click(tag("football.tag.note"));
    click(child(*view, "football.event.half1"));
    click(child(*view, "football.group.attack.header"));
    EXPECT_TRUE(chooser()->hasFocus());
    click(tag("football.tag.shot"));
    ASSERT_TRUE(sheet());
    QTest::keyClick(sheet(), Qt::Key_Return);
    app->settle(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return chooser()->hasFocus(); }));
    EXPECT_EQ(stamps().size(), 2u);

    // A collection that is changed elsewhere gets new buttons.
    auto* note = tag("football.tag.note");
    note->setFocus();
    app->core.commands.run(Command::compactTags);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(tag("football.tag.note")->hasFocus());
}

TEST_F(TagLibraryViewTest, SmallButtonsShowThirtyTagsInTheSmallestPanel) {
    view->resize(426, 352);  // of a screen of 1280 by 800 points, below title and menus
    app->core.commands.run(Command::compactTags);
    app->settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    app->settle();
    const auto* area = view->findChild<QScrollArea*>()->viewport();
    int shown = 0;
    for (const auto* button : view->findChildren<TagButton*>()) {
        const QRect place(button->mapTo(view.get(), QPoint(0, 0)), button->size());
        const QRect visible(area->mapTo(view.get(), QPoint(0, 0)), area->size());
        shown += visible.contains(place);
    }
    picture(*view, "panel-compact");
    EXPECT_GE(shown, 30);
    EXPECT_TRUE(app->core.settings.values->compactTags);
    click(child(*view, "football.group.attack.header"));
    EXPECT_FALSE(tag("football.tag.goal")->isVisible());
    EXPECT_TRUE(child(*view, "football.group.attack.header")->isVisible());
}

TEST_F(TagLibraryViewTest, TheLabelSheetStaysWithinTheWidthOfThePanel) {
    view->setGeometry(0, 40, 426, 400);
    app->settle();
    click(tag("football.tag.shot"));
    ASSERT_TRUE(sheet());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet()));
    EXPECT_GE(sheet()->x(), view->x());
    EXPECT_LE(sheet()->geometry().right(), view->geometry().right());
    picture(*sheet(), "labels-narrow");
}

TEST_F(TagLibraryViewTest, EveryControlIsReachedByTab) {
    std::set<QString> reached;
    chooser()->setFocus();
    for (int i = 0; i < 200; ++i) {
        if (auto* focused = QApplication::focusWidget())
            reached.insert(focused->objectName());
        QTest::keyClick(view.get(), Qt::Key_Tab);
    }
    for (const auto* button : view->findChildren<QAbstractButton*>())
        EXPECT_TRUE(!button->isVisible() || reached.contains(button->objectName()))
            << button->objectName().toStdString();
}

TEST_F(TagLibraryViewTest, TextsFitInBothLanguages) {
    for (const QString language : {"en", "ru"}) {
        open(language);
        app->player.play();
        playTo(10);
        click(tag("football.tag.possession"));
        click(tag("football.tag.highPress"));
        click(child(*view, "football.event.half1"));
        for (int i = 0; i < 12; ++i) {
            click(tag("football.tag.note"));
            app->settle(0.2);
        }
        playTo(47);
        for (const int width : {640, 500}) {
            view->resize(width, 560);
            app->settle();
            QTest::qWait(250);  // the chip's animation
            picture(*view, QString("panel-%1-%2").arg(language).arg(width));
            for (const auto* button : view->findChildren<QAbstractButton*>())
                EXPECT_GE(button->width(), button->sizeHint().width())
                    << button->accessibleName().toStdString();
        }
        auto* bar = view->findChild<QScrollArea*>()->verticalScrollBar();
        bar->setValue(bar->maximum());
        app->settle();
        picture(*view, "panel-end-" + language);
        click(tag("football.tag.shot"));
        ASSERT_NE(sheet(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet()));
        picture(*sheet(), "labels-" + language);
    }
}

}  // namespace
}  // namespace tembrix
