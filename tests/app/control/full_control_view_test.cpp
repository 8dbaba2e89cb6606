#include <QDrag>
#include <QElapsedTimer>
#include <QMimeData>
#include <QPointer>
#include <QTimer>
#include <gmock/gmock.h>

#include "app/control/control_window_fixture.h"
#include "app/widgets/stamp_items_sheet.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

using FullControlViewTest = ControlWindowTest;

TEST_F(FullControlViewTest, ClicksSelectSeekAndPlayAndClearAgain) {
    const Uuid id = addStamp(a, 40, 60);
    click(area(id).center());
    EXPECT_EQ(*app.timeline.selectedStampID, id);
    EXPECT_DOUBLE_EQ(app.player.currentTime(), 40);
    EXPECT_EQ(player().status(), PlayerStatus::playing);
    click({x(80), area(id).center().y()});
    EXPECT_FALSE(app.timeline.selectedStampID->has_value());

    app.scheduler.advance(1);
    click({x(25), 10});  // on the header
    EXPECT_NEAR(app.player.currentTime(), 25, 0.2);
}

TEST_F(FullControlViewTest, AGripFollowsThePointerAndThePlayheadTheEdge) {
    const Uuid id = addStamp(a, 40, 60);
    click(area(id).center());
    const QPointF grip(x(60) - 3, area(id).center().y());
    mouse(QEvent::MouseButtonPress, grip);
    mouse(QEvent::MouseMove, grip + QPointF(100, 0));
    picture(*view, "control-resizing");
    EXPECT_TRUE(*app.player.isResizingTag);
    EXPECT_NEAR(canvas->playheadX() - canvas->scrollX(), x(60) + 100, 0.01);
    mouse(QEvent::MouseMove, grip + QPointF(9000, 0));  // beyond the axis: ignored
    mouse(QEvent::MouseMove, grip + QPointF(150, 0));
    mouse(QEvent::MouseButtonRelease, grip + QPointF(150, 0));
    const double expected = canvas->axis().time(canvas->axis().x(60) + 150);
    EXPECT_NEAR(stamp(id)->timeFinishSeconds, expected, 1e-6);
    EXPECT_DOUBLE_EQ(stamp(id)->timeStartSeconds, 40);
    EXPECT_FALSE(*app.player.isResizingTag);

    const QPointF left(x(40) + 3, area(id).center().y());
    drag(left, left - QPointF(60, 0));
    EXPECT_NEAR(stamp(id)->timeStartSeconds, 40 - canvas->axis().time(60), 1e-6);

    mouse(QEvent::MouseButtonPress, QPointF(x(stamp(id)->timeStartSeconds) + 3, left.y()));
    mouse(QEvent::MouseMove, left);
    const double before = stamp(id)->timeStartSeconds;
    QTest::keyClick(canvas, Qt::Key_Escape);
    mouse(QEvent::MouseButtonRelease, left);
    EXPECT_DOUBLE_EQ(stamp(id)->timeStartSeconds, before);
}

TEST_F(FullControlViewTest, AStampDraggedByItsBodyChangesLinesAndNothingElse) {
    const Uuid id = addStamp(a, 40, 60);
    const QPointF from = area(id).center();
    drag(from, from + QPointF(0, 6));  // too short for a drag, so it is a click
    EXPECT_TRUE(stamp(id));
    EXPECT_EQ(*app.timeline.selectedStampID, id);
    mouse(QEvent::MouseButtonPress, from);
    mouse(QEvent::MouseMove, from + QPointF(80, 20));
    picture(*view, "control-moving");
    mouse(QEvent::MouseMove, from + QPointF(80, 34));
    mouse(QEvent::MouseButtonRelease, from + QPointF(80, 34));
    ASSERT_EQ(app.timeline.findLine(b)->stamps.size(), 1u);
    EXPECT_DOUBLE_EQ(app.timeline.findLine(b)->stamps[0]->timeStartSeconds, 40);
}

TEST_F(FullControlViewTest, TheStampMenuDeletesAndEdits) {
    const Uuid id = addStamp(a, 40, 60, "Shot & goal");
    app.timeline.selectStamp(id);
    contextMenu(canvas, area(id).center().toPoint());
    ASSERT_TRUE(menu());
    EXPECT_EQ(menuKeys(),
              QStringList({"fieldMapTagTitleNoNumber", "timelineButtonDeleteTag",
                           "timelineButtonEditLabels", "timelineButtonEditTimeEvents"}));
    EXPECT_FALSE(menu()->actions().first()->isEnabled());
    picture(*menu(), "control-stamp-menu");
    choose("timelineButtonEditLabels");
    auto* labels = sheet<StampItemsSheet>();
    ASSERT_TRUE(labels);
    picture(*labels, "control-labels-sheet");
    ASSERT_FALSE(app.tagLibrary.active->labels.empty());
    EXPECT_TRUE(*app.hotkeys.isLabelHotkeyMode);
    const std::string label = app.tagLibrary.active->labelGroups.front().lables.front();
    press(label.c_str(), labels);
    press("saveButtonTitle", labels);
    app.settle();
    EXPECT_THAT(stamp(id)->labels, ElementsAre(label));

    contextMenu(canvas, area(id).center().toPoint());
    EXPECT_EQ(menuKeys().at(1), "fieldMapLabelEvents");
    choose("timelineButtonEditTimeEvents");
    auto* events = sheet<StampItemsSheet>();
    ASSERT_TRUE(events);
    QTest::keyClick(events, Qt::Key_Escape);
    app.settle();
    EXPECT_FALSE(sheet<StampItemsSheet>());
    EXPECT_FALSE(*app.hotkeys.isLabelHotkeyMode);

    // The stamp may be removed before its sheet is open.
    contextMenu(canvas, area(id).center().toPoint());
    ASSERT_TRUE(menu());
    app.timeline.removeStamp(a, id);
    choose("timelineButtonEditLabels");
    auto* notFound = sheet<Sheet>();
    ASSERT_TRUE(notFound);
    EXPECT_EQ(notFound->objectName(), "fullControlExportErrorStampNotFound");
    press("okButtonTitle", notFound);

    const Uuid other = addStamp(b, 10, 20);
    app.timeline.selectStamp(other);
    contextMenu(canvas, area(other).center().toPoint());
    choose("timelineButtonDeleteTag");
    EXPECT_FALSE(stamp(other));
    EXPECT_FALSE(app.timeline.selectedStampID->has_value());
}

TEST_F(FullControlViewTest, WhileASheetIsOpenNoCommandOpensAnother) {
    Commands& commands = app.core.commands;
    const Uuid id = addStamp(a, 40, 60);
    app.timeline.selectStamp(id);
    const std::vector<Command> opening{Command::editLabels, Command::editTimeEvents,
                                       Command::addLine,    Command::renameLine,
                                       Command::exportAll,  Command::exportTags};
    for (const Command command : opening)
        EXPECT_TRUE(commands.isEnabled(command)) << commandRow(command).name;
    ASSERT_TRUE(commands.run(Command::editLabels));
    app.settle(0.2);
    auto* labels = sheet<StampItemsSheet>();
    ASSERT_TRUE(labels);
    // As from another window of the project, which the sheet does not block.
    for (const Command command : opening)
        EXPECT_FALSE(commands.run(command)) << commandRow(command).name;
    EXPECT_TRUE(commands.isEnabled(Command::zoomIn));
    commands.refresh();
    EXPECT_FALSE(find("fullControlButtonAddTimeline")->isEnabled());
    const std::string label = app.tagLibrary.active->labelGroups.front().lables.front();
    press(label.c_str(), labels);
    press("saveButtonTitle", labels);
    app.settle();
    EXPECT_THAT(stamp(id)->labels, ElementsAre(label));
    EXPECT_THAT(stamp(id)->timeEvents, testing::IsEmpty());
    EXPECT_TRUE(QTest::qWaitFor([&] { return find("fullControlButtonAddTimeline")->isEnabled(); }));

    // A sheet that opens between a request and its sheet.
    ASSERT_TRUE(commands.run(Command::editTimeEvents));
    ASSERT_TRUE(commands.run(Command::addLine));
    app.settle(0.2);
    EXPECT_FALSE(sheet<StampItemsSheet>());
    QTest::keyClick(sheet<Sheet>(), Qt::Key_Escape);
    ASSERT_TRUE(commands.run(Command::editTimeEvents));
    app.settle(0.2);
    ASSERT_TRUE(sheet<StampItemsSheet>());
    QTest::keyClick(sheet<Sheet>(), Qt::Key_Escape);
}

TEST_F(FullControlViewTest, LinesAreAddedRenamedAndDeletedWhileHotKeysRest) {
    press("fullControlButtonAddTimeline");
    auto* add = sheet<Sheet>();
    ASSERT_TRUE(add);
    picture(*add, "control-add-line");
    EXPECT_TRUE(*app.hotkeys.blockedSheetActive);
    auto* accept = find<QPushButton>("addTimelineButton", add);
    EXPECT_FALSE(accept->isEnabled());
    QTest::keyClicks(find<QLineEdit>("timelineName", add), "  Corners ");
    QTest::keyClick(add, Qt::Key_Return);
    app.settle();
    EXPECT_THAT(lineNames(), ElementsAre("Attack", "Defence", "Corners"));
    EXPECT_EQ(*app.timeline.selectedLineID, app.timeline.lines->back()->id);
    QTest::qWait(1);
    EXPECT_FALSE(*app.hotkeys.blockedSheetActive);

    const auto cell = [&](int row) {
        return names->visualRect(names->model()->index(row, 0)).center();
    };
    contextMenu(names->viewport(), cell(1));
    EXPECT_EQ(menuKeys(), QStringList({"editName", "timelineButtonDeleteTimeline"}));
    menu()->close();
    names->setFocus();
    names->setCurrentIndex(names->model()->index(0, 0));
    key(Qt::Key_F2);  // the drawings keep their name
    EXPECT_FALSE(sheet<Sheet>());
    names->setCurrentIndex(names->model()->index(1, 0));
    key(Qt::Key_F10, Qt::ShiftModifier);
    choose("editName");
    auto* edit = sheet<Sheet>();
    ASSERT_TRUE(edit);
    EXPECT_EQ(find<QLineEdit>("timelineName", edit)->text(), "Attack");
    QTest::keyClicks(find<QLineEdit>("timelineName", edit), "Set pieces");
    press("saveButtonTitle", edit);
    app.settle();
    EXPECT_THAT(lineNames(), ElementsAre("Set pieces", "Defence", "Corners"));

    contextMenu(names->viewport(), cell(2));
    choose("timelineButtonDeleteTimeline");
    EXPECT_THAT(lineNames(), ElementsAre("Set pieces", "Corners"));
    EXPECT_EQ(find("fullControlUndo")->toolTip(), "Undo (Ctrl+Z): delete a timeline");
    app.events.post(events::EditorModeChanged{true});  // now undo is the editor's
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(find("fullControlUndo")->isEnabled());
    EXPECT_THAT(lineNames(), ElementsAre("Set pieces", "Corners"));
    app.events.post(events::EditorModeChanged{false});
    // The same place with Russian letters.
    constexpr quint32 scanCodeOfZ = 52;
    QKeyEvent russian(QEvent::KeyPress, Qt::Key(u'Я'), Qt::ControlModifier, scanCodeOfZ, 0x6d1, 0,
                      "\u044f");
    QApplication::sendEvent(view->windowHandle(), &russian);
    EXPECT_THAT(lineNames(), ElementsAre("Set pieces", "Defence", "Corners"));
    EXPECT_TRUE(find("fullControlRedo")->isEnabled());
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(lineNames(), ElementsAre("Set pieces", "Corners"));
}

TEST_F(FullControlViewTest, TheVideoWaitsBehindSheetsAndGoesOnOnlyIfItPlayed) {
    const Uuid id = addStamp(a, 40, 60);
    app.timeline.selectStamp(id);
    app.timeline.selectLine(a);
    for (const Command command : {Command::addLine, Command::renameLine, Command::editLabels,
                                  Command::editTimeEvents, Command::exportAll, Command::exportTags})
        for (const bool played : {true, false}) {
            SCOPED_TRACE(commandRow(command).name);
            played ? app.player.play() : app.player.pause();
            ASSERT_TRUE(app.core.commands.run(command));
            app.settle(0.2);
            auto* open = sheet<Sheet>();
            ASSERT_TRUE(open);
            EXPECT_EQ(player().status(), PlayerStatus::paused);
            QTest::keyClick(open, Qt::Key_Escape);
            app.settle();
            EXPECT_EQ(player().status(), played ? PlayerStatus::playing : PlayerStatus::paused);
        }
}

TEST_F(FullControlViewTest, ASignSaysWhetherAllMarksAreOnTheDisk) {
    auto* sign = find<QLabel>("savedSign");
    EXPECT_EQ(sign->text(), "Saved");
    app.defaults.delaySync(true);
    addStamp(a, 40, 60);
    app.settle();
    EXPECT_EQ(sign->text(), "Saving…");
    EXPECT_EQ(sign->accessibleName(), "The last marks are being written to the disk.");
    app.defaults.delaySync(false);
    app.settle();
    EXPECT_EQ(sign->text(), "Saved");
    app.defaults.refuse("disk full");
    addStamp(a, 70, 80);
    app.settle();
    EXPECT_EQ(sign->text(), "Not saved");
    app.defaults.refuse({});
}

TEST_F(FullControlViewTest, TheFocusNeverJumpsToAControlThatNobodyAskedFor) {
    EXPECT_EQ(view->focusWidget(), view.get()) << "no control has it at first";
    auto* undo = find("fullControlUndo");
    app.timeline.renameLine(a, "Renamed");
    canvas->setFocus();
    QTest::mouseClick(undo, Qt::LeftButton);
    EXPECT_TRUE(canvas->hasFocus());
    app.timeline.renameLine(a, "Renamed");
    undo->setFocus();
    while (undo->isEnabled())
        key(Qt::Key_Return);
    // The next control is redo: a further press would make everything again.
    EXPECT_TRUE(view->hasFocus());
    key(Qt::Key_Return);
    EXPECT_TRUE(find("fullControlRedo")->isEnabled());

    names->setFocus();
    app.core.commands.run(Command::addLine);
    auto* add = sheet<Sheet>();
    ASSERT_TRUE(add);
    QTest::keyClick(add, Qt::Key_Escape);
    app.settle();
    EXPECT_TRUE(QTest::qWaitFor([&] { return names->hasFocus(); }));
}

TEST_F(FullControlViewTest, ClosingTheWindowEndsTheDragOfALine) {
    const auto center = names->viewport()->mapTo(
        view.get(), names->visualRect(names->model()->index(1, 0)).center());
    const QPointer<QWindow> window = view->windowHandle();
    bool dragged = false;
    QTimer::singleShot(300, qApp, [&] {
        dragged = names->findChild<QDrag*>() || qApp->findChild<QDrag*>();
        view.reset();
    });
    QTimer::singleShot(4000, qApp, [] { QDrag::cancel(); });
    QElapsedTimer elapsed;
    elapsed.start();
    QTest::mousePress(window, Qt::LeftButton, {}, center);
    for (const int y : {5, 15, 30}) {
        if (window)  // one of the moves starts the drag and returns when the window is gone
            QTest::mouseMove(window, center + QPoint(0, y));
    }
    QTest::qWait(500);
    EXPECT_TRUE(dragged);
    EXPECT_FALSE(view);
    EXPECT_LT(elapsed.elapsed(), 3000) << "the drag went on without its window";
}

TEST_F(FullControlViewTest, LinesAreReorderedByDropAndByKeyboard) {
    addLine("Corners");
    // Row 0 is the drawings line and cannot be moved. Rows are 30 points high.
    const auto drop = [&](int row, int y) {
        auto* model = names->model();
        const std::unique_ptr<QMimeData> data(model->mimeData({model->index(row, 0)}));
        const QPoint at(50, y);
        QDragEnterEvent enter(at, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QDragMoveEvent over(at, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QDropEvent fall(at, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        for (QEvent* event : std::initializer_list<QEvent*>{&enter, &over, &fall})
            QApplication::sendEvent(names->viewport(), event);
        app.settle();
        return over.isAccepted();
    };
    EXPECT_TRUE(drop(1, 105));  // on the third: directly above it
    EXPECT_THAT(lineNames(), ElementsAre("Defence", "Attack", "Corners"));
    EXPECT_TRUE(drop(2, 75));  // on itself
    EXPECT_THAT(lineNames(), ElementsAre("Defence", "Attack", "Corners"));
    EXPECT_FALSE(drop(2, 10));
    EXPECT_FALSE(drop(2, 28));  // the lowest points of a name belong to it as well
    EXPECT_TRUE(drop(2, 58));
    EXPECT_THAT(lineNames(), ElementsAre("Attack", "Defence", "Corners"));
    EXPECT_TRUE(drop(1, 118));
    EXPECT_THAT(lineNames(), ElementsAre("Defence", "Attack", "Corners"));
    EXPECT_TRUE(drop(2, 200));  // in the empty area below
    EXPECT_THAT(lineNames(), ElementsAre("Defence", "Corners", "Attack"));
    EXPECT_TRUE(drop(1, 200));
    EXPECT_THAT(lineNames(), ElementsAre("Corners", "Attack", "Defence"));
    EXPECT_TRUE(drop(2, 45));
    EXPECT_TRUE(drop(3, 75));
    EXPECT_THAT(lineNames(), ElementsAre("Attack", "Defence", "Corners"));
    EXPECT_TRUE(drop(2, 45));
    EXPECT_EQ(names->model()->flags(names->model()->index(0, 0)) & Qt::ItemIsDragEnabled, 0);

    names->setFocus();
    names->setCurrentIndex(names->model()->index(1, 0));
    QTest::keyClick(names, Qt::Key_Down, Qt::AltModifier);
    QTest::keyClick(names, Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(lineNames(), ElementsAre("Attack", "Corners", "Defence"));
    EXPECT_EQ(names->currentIndex().row(), 3);
    QTest::keyClick(names, Qt::Key_Return);
    EXPECT_EQ(*app.timeline.selectedLineID, app.timeline.lines->back()->id);
    QTest::mouseClick(names->viewport(), Qt::LeftButton, {},
                      names->visualRect(names->model()->index(1, 0)).center());
    EXPECT_EQ(*app.timeline.selectedLineID, a);
}

TEST_F(FullControlViewTest, TheModeSwitchReachesTheStoreAndTheMenus) {
    press("fullControlModeTagBased");
    EXPECT_EQ(app.markupModes.currentMarkupMode(), MarkupMode::tagBased);
    EXPECT_FALSE(find("fullControlButtonAddTimeline")->isEnabled());
    contextMenu(names->viewport(), names->visualRect(names->model()->index(1, 0)).center());
    EXPECT_EQ(menuKeys(), QStringList{"timelineButtonDeleteTimeline"});
    menu()->close();
    app.markupModes.setMarkupMode(MarkupMode::standard);
    EXPECT_TRUE(find<QToolButton>("fullControlModeStandard")->isChecked());
    EXPECT_TRUE(find("fullControlButtonAddTimeline")->isEnabled());
}

TEST_F(FullControlViewTest, OptionDeleteWorksFromAnyFocusWhileTheWindowIsThere) {
    const Uuid id = addStamp(a, 40, 60);
    app.timeline.selectStamp(id);
    key(Qt::Key_Backspace);
    EXPECT_TRUE(stamp(id));
    names->setFocus();
    key(Qt::Key_Delete, Qt::AltModifier);
    EXPECT_TRUE(stamp(id)) << "the key that deletes to the right";
    key(Qt::Key_Backspace, Qt::AltModifier);
    EXPECT_FALSE(stamp(id));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(stamp(id));
    view->hide();
    app.timeline.selectStamp(id);
    key(Qt::Key_Backspace, Qt::AltModifier);
    EXPECT_TRUE(stamp(id));
}

TEST_F(FullControlViewTest, TheKeyboardAloneReachesStampsGripsAndMenus) {
    const Uuid id = addStamp(a, 40, 60);
    canvas->setFocus();
    const auto type = [&](Qt::Key code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(canvas, code, modifiers);
    };
    type(Qt::Key_Down);
    type(Qt::Key_Down);
    EXPECT_EQ(view->model().cursor->stamp, id);
    type(Qt::Key_Return);
    EXPECT_EQ(*app.timeline.selectedStampID, id);
    EXPECT_DOUBLE_EQ(app.player.currentTime(), 40);
    type(Qt::Key_Left, Qt::AltModifier);
    EXPECT_NEAR(stamp(id)->timeStartSeconds, 39.9, 1e-9);
    type(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_NEAR(stamp(id)->timeFinishSeconds, 60.1, 1e-9);
    picture(*view, "control-keyboard");
    contextMenu(canvas, {}, QContextMenuEvent::Keyboard);
    ASSERT_TRUE(menu());
    menu()->close();
    type(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(app.timeline.findLine(b)->stamps.size(), 1u);
}

}  // namespace
}  // namespace tembrix
