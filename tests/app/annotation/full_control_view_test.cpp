#include "app/annotation/full_control_view.h"

#include <QAccessible>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>
#include <QWindow>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/annotation/control_project.h"
#include "app/annotation/line_names_view.h"
#include "app/annotation/timeline_canvas.h"
#include "app/theme/theme.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/stamp_items_sheet.h"
#include "app/widgets/tabular_label.h"
#include "app/window_tests.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

class FullControlViewTest : public testing::Test {
  protected:
    FullControlViewTest() {
        a = app.addLine("Attack");
        b = app.addLine("Defence");
        view = std::make_unique<FullControlView>(app.services);
        view->resize(1280, 430);
        view->show();
        view->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(view.get()));
        canvas = view->findChild<TimelineCanvas*>();
        names = view->findChild<LineNamesView*>();
    }

    Uuid addLine(const std::string& name) { return app.addLine(name); }
    Uuid addStamp(const Uuid& line, double start, double finish,
                  const std::string& label = "Pass") {
        return app.addStamp(line, start, finish, label);
    }
    const TimelineStamp* stamp(const Uuid& id) { return app.stamp(id); }
    QRectF area(const Uuid& id) {
        const auto hit = view->model().rows().findStamp(id);
        return canvas->stampArea(hit->row, *hit->stamp);
    }
    double x(double time) { return canvas->axis().x(time) - canvas->scrollX(); }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton) {
        const Qt::MouseButtons held =
            type == QEvent::MouseButtonPress || (type == QEvent::MouseMove && button)
                ? button
                : Qt::NoButton;
        QMouseEvent event(type, at, canvas->mapToGlobal(at),
                          type == QEvent::MouseMove ? Qt::NoButton : button, held, Qt::NoModifier);
        event.setTimestamp(clock += 200);
        QApplication::sendEvent(canvas, &event);
    }
    void click(QPointF at) {
        mouse(QEvent::MouseButtonPress, at);
        mouse(QEvent::MouseButtonRelease, at);
    }
    void drag(QPointF from, QPointF to) {
        mouse(QEvent::MouseButtonPress, from);
        for (int i = 1; i <= 10; ++i)
            mouse(QEvent::MouseMove, from + (to - from) * i / 10);
        mouse(QEvent::MouseButtonRelease, to);
    }
    void hover(QPointF at) { mouse(QEvent::MouseMove, at, Qt::NoButton); }

    template <class Widget = QAbstractButton>
    Widget* find(const char* name, QWidget* in = nullptr) {
        return (in ? in : view.get())->findChild<Widget*>(name);
    }
    void press(const char* name, QWidget* in = nullptr) {
        auto* button = find<QAbstractButton>(name, in);
        ASSERT_TRUE(button) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
    // A key as the window system gives it: to the window first.
    void key(Qt::Key code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        view->activateWindow();
        EXPECT_TRUE(!view->isVisible() || QTest::qWaitForWindowActive(view.get()));
        QTest::keyClick(view->windowHandle(), code, modifiers);
        app.settle();
    }
    QMenu* menu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    QStringList menuKeys() {
        QStringList keys;
        for (const QAction* action : menu()->actions())
            if (!action->isSeparator())
                keys << action->objectName();
        return keys;
    }
    void choose(const char* name) {
        ASSERT_TRUE(menu());
        auto* action = menu()->findChild<QAction*>(name);
        ASSERT_TRUE(action) << name;
        menu()->setActiveAction(action);
        QTest::keyClick(menu(), Qt::Key_Return);
        app.settle(0.2);
    }
    void contextMenu(QWidget* widget, QPoint at,
                     QContextMenuEvent::Reason reason = QContextMenuEvent::Mouse) {
        QContextMenuEvent event(reason, at, widget->mapToGlobal(at));
        QApplication::sendEvent(widget, &event);
    }
    template <class Type>
    Type* sheet() {
        app.settle();
        for (QWidget* top : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<Type*>(top); found && found->isVisible())
                return found;
        return nullptr;
    }
    std::vector<std::string> lineNames() {
        std::vector<std::string> result;
        for (const auto& line : *app.timeline.lines)
            result.push_back(line->name);
        result.erase(result.begin());  // the drawings
        return result;
    }
    FakePlayer& player() { return *app.players.player(); }

    ControlProject app;
    Uuid a;
    Uuid b;
    std::unique_ptr<FullControlView> view;
    TimelineCanvas* canvas = nullptr;
    LineNamesView* names = nullptr;
    quint64 clock = 1000;
};

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
    drag(from, from + QPointF(0, 6));  // too short a way for a drag: a click
    EXPECT_TRUE(stamp(id));
    EXPECT_EQ(*app.timeline.selectedStampID, id);
    mouse(QEvent::MouseButtonPress, from);
    mouse(QEvent::MouseMove, from + QPointF(80, 20));
    picture(*view, "control-moving");
    mouse(QEvent::MouseMove, from + QPointF(80, 34));
    mouse(QEvent::MouseButtonRelease, from + QPointF(80, 34));
    ASSERT_EQ(app.timeline.findLine(b)->stamps.size(), 1u);
    EXPECT_DOUBLE_EQ(app.timeline.findLine(b)->stamps[0]->timeStartSeconds, 40);
    const Uuid moved = app.timeline.findLine(b)->stamps[0]->id;
    drag(area(moved).center(), area(moved).center() + QPointF(0, 900));
    EXPECT_EQ(app.timeline.findLine(b)->stamps[0]->id, moved);
}

TEST_F(FullControlViewTest, TheStampMenuDeletesAndEdits) {
    const Uuid id = addStamp(a, 40, 60, "Shot & goal");
    app.timeline.selectedStampID.set(id);
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
    press("collectionsButtonAdd", labels);
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

    // The stamp can go while the sheet is on its way.
    contextMenu(canvas, area(id).center().toPoint());
    ASSERT_TRUE(menu());
    app.timeline.removeStamp(a, id);
    choose("timelineButtonEditLabels");
    auto* notFound = sheet<Sheet>();
    ASSERT_TRUE(notFound);
    EXPECT_EQ(notFound->objectName(), "fullControlExportErrorStampNotFound");
    press("okButtonTitle", notFound);

    const Uuid other = addStamp(b, 10, 20);
    app.timeline.selectedStampID.set(other);
    contextMenu(canvas, area(other).center().toPoint());
    choose("timelineButtonDeleteTag");
    EXPECT_FALSE(stamp(other));
    EXPECT_FALSE(app.timeline.selectedStampID->has_value());
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
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(lineNames(), ElementsAre("Set pieces", "Defence", "Corners"));
    EXPECT_TRUE(find("fullControlRedo")->isEnabled());
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(lineNames(), ElementsAre("Set pieces", "Corners"));
}

TEST_F(FullControlViewTest, LinesAreReorderedByDropAndByKeyboard) {
    addLine("Corners");
    const auto drop = [&](int from, int onto) {
        auto* model = names->model();
        const std::unique_ptr<QMimeData> data(model->mimeData({model->index(from, 0)}));
        model->dropMimeData(data.get(), Qt::MoveAction, -1, -1, model->index(onto, 0));
        app.settle();
    };
    drop(1, 3);  // row 0 holds the drawings
    EXPECT_THAT(lineNames(), ElementsAre("Defence", "Attack", "Corners"));
    drop(2, 2);
    EXPECT_THAT(lineNames(), ElementsAre("Defence", "Attack", "Corners"));

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

TEST_F(FullControlViewTest, ZoomKeepsThePlayheadInPlaceAndRowsScrollInStep) {
    app.player.seek(50);
    const double before = canvas->playheadX() - canvas->scrollX();
    for (int i = 0; i < 8; ++i)
        press("fullControlZoomIn");
    EXPECT_EQ(find<TabularLabel>("fullControlZoom")->text(), "5.0x");
    EXPECT_DOUBLE_EQ(canvas->axis().width, 5.0 * canvas->width());
    EXPECT_NEAR(canvas->playheadX() - canvas->scrollX(), before, 1.0);

    Q_EMIT canvas->pinched(2.0, 100);
    EXPECT_EQ(find<TabularLabel>("fullControlZoom")->text(), "10.0x");
    Q_EMIT canvas->pinchEnded();
    EXPECT_DOUBLE_EQ(*view->model().timelineScale, 10.0);
    const double scroll = canvas->scrollX();
    drag({100, 10}, {canvas->width() + 30.0, 10});  // the header, beyond the right side
    EXPECT_GT(canvas->scrollX(), scroll);
    for (int i = 0; i < 30; ++i)
        view->model().zoomOut();
    EXPECT_DOUBLE_EQ(canvas->axis().width, canvas->width());
    EXPECT_FALSE(find("fullControlZoomOut")->isEnabled());
    EXPECT_EQ(canvas->scrollX(), 0);

    for (int i = 0; i < 30; ++i)
        addLine("L" + std::to_string(i));
    app.settle();
    names->scrollToBottom();
    EXPECT_GT(canvas->scrollY(), 0);
    EXPECT_EQ(canvas->scrollY(), names->verticalScrollBar()->value());
    const double bottom = canvas->rowArea(view->model().rows().size() - 1).bottom();
    EXPECT_NEAR(bottom, canvas->height(), 1);
}

TEST_F(FullControlViewTest, HoverTextStandsInTheStatusLine) {
    const Uuid id = addStamp(a, 40, 60, "Shot");
    auto* status = find<ElidedLabel>("timelineHoverText");
    hover(area(id).center());
    EXPECT_EQ(status->fullText(), "Shot   ·   Attack   ·   —   ·   00:40 • 00:20");
    hover({x(70), area(id).center().y()});
    EXPECT_EQ(status->fullText(), "");
    hover(area(id).center());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(canvas, &leave);
    EXPECT_EQ(status->fullText(), "");
}

TEST_F(FullControlViewTest, OptionDeleteWorksFromAnyFocusButNotWhileTyping) {
    const Uuid id = addStamp(a, 40, 60);
    app.timeline.selectedStampID.set(id);
    app.focus.isAnyTextFieldFocused.set(true);
    key(Qt::Key_Backspace, Qt::AltModifier);
    EXPECT_TRUE(stamp(id));
    app.focus.isAnyTextFieldFocused.set(false);
    key(Qt::Key_Backspace);
    EXPECT_TRUE(stamp(id));
    names->setFocus();
    key(Qt::Key_Delete, Qt::AltModifier);
    EXPECT_FALSE(stamp(id));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(stamp(id));
    view->hide();
    app.timeline.selectedStampID.set(id);
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

TEST_F(FullControlViewTest, ADrawingOnScreenDisablesAndDimsTheTimelines) {
    const Uuid id = addStamp(a, 40, 60);
    const QPoint place = canvas->mapTo(view.get(), area(id).center().toPoint());
    const auto color = [&] { return view->grab().toImage().pixelColor(place); };
    const QColor bright = color();
    app.events.post(events::EditorModeChanged{true});
    EXPECT_FALSE(canvas->isEnabled());
    for (int i = 0; i < 3; ++i)  // however often it is painted
        EXPECT_NEAR(color().green(), (bright.green() + theme::background.green()) / 2, 2);
    picture(*view, "control-veiled");
    app.events.post(events::EditorModeChanged{false});
    app.events.post(events::ScreenshotDisplayChanged{true});
    EXPECT_FALSE(names->isEnabled());
    app.events.post(events::ScreenshotDisplayChanged{false});
    EXPECT_TRUE(canvas->isEnabled());
    EXPECT_EQ(color(), bright);
}

TEST_F(FullControlViewTest, APlayheadMoveRepaintsItsStripAloneAndStampsTheirRow) {
    class Watch final : public QObject {
      public:
        QRegion painted;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint)
                painted += static_cast<QPaintEvent*>(event)->region();
            return false;
        }
    } watch;
    app.settle();
    canvas->installEventFilter(&watch);
    app.player.seek(10);
    app.settle();
    watch.painted = {};
    app.player.seek(30);
    app.settle();
    EXPECT_FALSE(watch.painted.isEmpty());
    int pixels = 0;
    for (const QRect& rect : watch.painted)
        pixels += rect.width() * rect.height();
    EXPECT_LE(pixels, 2 * 4 * canvas->height());

    watch.painted = {};
    addStamp(b, 1, 5);
    app.settle();
    EXPECT_EQ(watch.painted.boundingRect().height(), 30);
}

TEST_F(FullControlViewTest, ScreenReadersFindLinesAndStamps) {
    const Uuid id = addStamp(a, 40, 60, "Shot");
    auto* list = QAccessible::queryAccessibleInterface(canvas);
    ASSERT_TRUE(list);
    ASSERT_EQ(list->childCount(), 3);
    auto* line = list->child(1);
    EXPECT_EQ(line->text(QAccessible::Name), "Attack");
    ASSERT_EQ(line->childCount(), 1);
    auto* item = line->child(0);
    EXPECT_EQ(item->text(QAccessible::Name), "Shot, 00:40 – 01:00");
    EXPECT_EQ(item->parent(), line);
    EXPECT_TRUE(item->rect().contains(canvas->mapToGlobal(area(id).center().toPoint())));
    app.timeline.removeStamp(a, id);
    EXPECT_FALSE(item->isValid());
    EXPECT_EQ(item->text(QAccessible::Name), "");

    EXPECT_EQ(unnamedControls(*view), QStringList());
}

}  // namespace
}  // namespace tembrix
