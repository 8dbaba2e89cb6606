// Display of the timelines: zoom, scrolling, hover text, dimming, repainted areas, accessibility.

#include <QAccessible>
#include <random>

#include "app/accessible_tree.h"
#include "app/control/control_window_fixture.h"
#include "app/theme/theme.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/sheet.h"
#include "app/widgets/tabular_label.h"

namespace tembrix {
namespace {

using TimelinesAreaTest = ControlWindowTest;

TEST_F(TimelinesAreaTest, ZoomKeepsThePlayheadInPlaceAndRowsScrollInStep) {
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
    for (int i = 0; i < 120; ++i)  // no upper limit
        view->model().magnify(1.2), view->model().endMagnify();
    EXPECT_GE(canvas->scrollX(), 0);
    while (*view->model().timelineScale > 1)
        view->model().magnify(0.01), view->model().endMagnify();
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

TEST_F(TimelinesAreaTest, WithoutTimelinesTheAreaSaysWhatToDo) {
    auto* hint = find<QLabel>("timelinesEmpty");
    EXPECT_FALSE(hint->isVisible());
    app.timeline.deleteLine(a);
    app.timeline.deleteLine(b);
    EXPECT_TRUE(hint->isVisible());
    picture(*view, "control-empty");
    app.markupModes.setMarkupMode(MarkupMode::tagBased);
    EXPECT_TRUE(hint->isVisible());
    EXPECT_FALSE(find("timelinesEmptyAdd")->isVisible());
    app.markupModes.setMarkupMode(MarkupMode::standard);
    press("timelinesEmptyAdd");
    auto* add = sheet<Sheet>();
    ASSERT_TRUE(add);
    QTest::keyClicks(find<QLineEdit>("timelineName", add), "First half");
    QTest::keyClick(add, Qt::Key_Return);
    app.settle();
    EXPECT_EQ(lineNames().size(), 1u);
    EXPECT_FALSE(hint->isVisible());
}

TEST_F(TimelinesAreaTest, TheZoomedViewFollowsThePlayheadUnlessAHandScrolls) {
    for (int i = 0; i < 8; ++i)
        view->model().zoomIn();
    QScrollBar* bar = nullptr;
    for (auto* each : view->findChildren<QScrollBar*>())
        bar = each->parent() == canvas->parent() && each->orientation() == Qt::Horizontal ? each
                                                                                          : bar;
    const auto playhead = [&] { return canvas->playheadX() - canvas->scrollX(); };
    bar->setValue(0);
    app.player.seek(19.9);
    app.settle();
    EXPECT_EQ(canvas->scrollX(), 0);
    app.player.seek(20.1);
    app.settle();
    EXPECT_NEAR(playhead(), canvas->width() / 4.0, 1);
    bar->setValue(3 * canvas->width());  // the user looks at another part
    app.player.seek(20.3);
    app.settle();
    EXPECT_EQ(canvas->scrollX(), 3 * canvas->width());

    // Clicking a stamp that is partly out of view does not scroll. Moving the keyboard cursor to it
    // does.
    const Uuid wide = addStamp(a, 62, 99);
    const Uuid far = addStamp(a, 10, 12);
    app.player.seek(61);
    click(area(wide).topLeft() + QPointF(60, 12));
    app.settle();
    EXPECT_EQ(canvas->scrollX(), 3 * canvas->width());
    canvas->setFocus();
    QTest::keyClick(canvas, Qt::Key_Left);
    EXPECT_TRUE(canvas->rect().contains(area(far).center().toPoint()));
}

TEST_F(TimelinesAreaTest, HoverTextIsShownInTheStatusLine) {
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

TEST_F(TimelinesAreaTest, TheStampThatAClickTakesIsOutlinedAndNamedToo) {
    const Uuid first = addStamp(a, 40, 60, "Shot");
    const Uuid top = addStamp(a, 45, 70, "Goal");
    const QPointF at(x(50), area(top).center().y());
    const auto outlined = [&](const Uuid& id) {
        const QPointF edge(area(id).center().x(), area(id).top() - 0.5);
        return canvas->grab().toImage().pixelColor(edge.toPoint()).lightness() > 150;
    };
    EXPECT_FALSE(outlined(top));
    hover(at);
    EXPECT_EQ(find<ElidedLabel>("timelineHoverText")->fullText(),
              "Shot   ·   Attack   ·   —   ·   00:40 • 00:20      "
              "A click takes: Goal   ·   Attack   ·   —   ·   00:45 • 00:25");
    EXPECT_TRUE(outlined(top));
    picture(*view, "control-pointed");
    // A new stamp comes between the pointer and the others.
    const Uuid newest = addStamp(a, 44, 72, "Corner");
    EXPECT_EQ(*view->model().pointedStamp, newest);
    app.timeline.removeStamp(a, newest);
    EXPECT_EQ(*view->model().pointedStamp, top);
    click(at);
    EXPECT_EQ(*app.timeline.selectedStampID, top);
    EXPECT_NE(first, top);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(canvas, &leave);
    EXPECT_FALSE(*view->model().pointedStamp);
}

TEST_F(TimelinesAreaTest, ADrawingOnScreenDisablesAndDimsTheTimelines) {
    const Uuid id = addStamp(a, 40, 60);
    const QPoint place = canvas->mapTo(view.get(), area(id).center().toPoint());
    const auto color = [&] { return view->grab().toImage().pixelColor(place); };
    const QColor bright = color();
    app.events.post(events::EditorModeChanged{true});
    EXPECT_FALSE(canvas->isEnabled());
    for (int i = 0; i < 3; ++i)  // regardless of how often it is painted
        EXPECT_NEAR(color().green(), (bright.green() + theme::background.green()) / 2, 2);
    picture(*view, "control-veiled");
    app.events.post(events::EditorModeChanged{false});
    app.events.post(events::ScreenshotDisplayChanged{true});
    EXPECT_FALSE(names->isEnabled());
    app.events.post(events::ScreenshotDisplayChanged{false});
    EXPECT_TRUE(canvas->isEnabled());
    EXPECT_EQ(color(), bright);
}

TEST_F(TimelinesAreaTest, APlayheadMoveRepaintsItsStripAloneAndStampsTheirRow) {
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

    // Moving a stamp to another row repaints its old and its new area.
    watch.painted = {};
    const Uuid brief = addStamp(a, 40, 42);
    const QPointF from = area(brief).center();
    mouse(QEvent::MouseButtonPress, from);
    mouse(QEvent::MouseMove, from + QPointF(0, 12));
    app.settle();
    watch.painted = {};
    mouse(QEvent::MouseMove, from + QPointF(0, 20));
    app.settle();
    EXPECT_LE(watch.painted.boundingRect().width(), 80);
    EXPECT_LE(watch.painted.boundingRect().height(), 60);
    watch.painted = {};
    mouse(QEvent::MouseButtonRelease, from + QPointF(0, 2));
    app.settle();
    EXPECT_LE(watch.painted.boundingRect().height(), 75);
}

// Levels, shadows, grips and the least width make a change reach further than its own times.
TEST_F(TimelinesAreaTest, APartRepaintedAfterAnEditLooksLikeTheWholeRepainted) {
    std::mt19937 random(3);
    const auto time = [&] { return static_cast<double>(random() % 1000) / 10; };
    const auto anyStamp = [&](const Uuid& line) {
        const auto& stamps = app.timeline.findLine(line)->stamps;
        return stamps.empty() ? Uuid::random() : stamps[random() % stamps.size()]->id;
    };
    for (int i = 0; i < 120; ++i) {
        const Uuid line = random() % 3 ? a : b;
        const Uuid target = anyStamp(line);
        switch (random() % 8) {
            case 0:
                app.timeline.removeStamp(line, target);
                break;
            case 1:
                app.timeline.moveStamp({line, target}, a);
                break;
            case 2:
                app.timeline.updateStampTimes(line, target, time(), std::nullopt);
                break;
            case 3:
                app.timeline.selectStamp(target);
                break;
            case 4:
                app.history.undo();
                break;
            default: {
                const double start = time();
                addStamp(line, start, start + (random() % 2 ? 0.5 : 12));
            }
        }
        app.settle();
        const QImage parts = canvas->grab().toImage();
        canvas->setScroll(0, 1);
        canvas->setScroll(0, 0);
        ASSERT_EQ(parts, canvas->grab().toImage()) << "edit " << i;
    }
}

TEST_F(TimelinesAreaTest, ScreenReadersFindLinesAndStamps) {
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

TEST_F(TimelinesAreaTest, ScreenReadersFollowTheSelectionAndPressStamps) {
    const auto label = app.tagLibrary.merged->labels.front();
    const auto event = app.tagLibrary.merged->timeEvents.front();
    TimelineStamp shot = ControlProject::makeStamp(40, 60, "Shot");
    shot.labels = {label.id};
    shot.timeEvents = {event.id};
    app.timeline.appendStamp(a, shot);
    const auto list = QAccessible::queryAccessibleInterface(canvas);
    const auto lines = QAccessible::queryAccessibleInterface(names);
    const auto told = [](tree::Node parent) {
        QStringList selected;
        for (int i = 0; i < parent->childCount(); ++i)
            if (parent->child(i)->state().selected)
                selected << tree::name(parent->child(i));
        return selected;
    };
    // The line that marks go to, wherever the focus of the list of names is.
    app.timeline.selectLine(b);
    app.settle();
    EXPECT_EQ(told(list), QStringList("Defence"));
    EXPECT_EQ(told(lines), QStringList("Defence, tags: 0"));
    names->setFocus();
    EXPECT_EQ(names->currentLine(), b);
    QTest::keyClick(names, Qt::Key_Up);
    EXPECT_EQ(told(lines), QStringList("Defence, tags: 0"));
    Announcements announced;
    EXPECT_TRUE(tree::act(list->child(1)));
    EXPECT_EQ(*app.timeline.selectedLineID, a);
    EXPECT_EQ(told(list), QStringList("Attack"));
    EXPECT_EQ(told(lines), QStringList("Attack, tags: 1"));
    EXPECT_TRUE(announced.contains(QAccessible::SelectionAdd, "Attack"));

    const auto stamp = list->child(1)->child(0);
    const QString name = "Shot, 00:40 – 01:00";
    EXPECT_EQ(tree::description(stamp),
              qtext("Labels: " + label.name + ". Time events: " + event.name));
    EXPECT_TRUE(tree::act(stamp, "Select"));
    EXPECT_TRUE(stamp->state().selected);
    EXPECT_EQ(*app.player.status, PlayerStatus::paused);
    EXPECT_TRUE(announced.contains(QAccessible::SelectionAdd, name));
    EXPECT_TRUE(tree::act(stamp, QAccessibleActionInterface::setFocusAction()));
    EXPECT_TRUE(stamp->state().focused);
    EXPECT_TRUE(announced.contains(QAccessible::Focus, name));
    EXPECT_TRUE(tree::act(stamp));
    app.settle();
    EXPECT_EQ(player().currentTime(), 40);
    EXPECT_EQ(*app.player.status, PlayerStatus::playing);
    EXPECT_TRUE(tree::act(stamp, QAccessibleActionInterface::showMenuAction()));
    ASSERT_TRUE(menu());
    EXPECT_TRUE(tree::find(QAccessible::queryAccessibleInterface(view.get()), QAccessible::MenuItem,
                           "Delete tag"));
    menu()->close();

    announced.clear();
    addStamp(a, 1, 2);
    EXPECT_TRUE(announced.contains(QAccessible::DescriptionChanged, "Attack"));
    EXPECT_TRUE(announced.contains(QAccessible::ObjectCreated, "Pass, 00:01 – 00:02"));

    const auto zoom =
        tree::find(QAccessible::queryAccessibleInterface(view.get()), QAccessible::Slider, "Zoom");
    ASSERT_TRUE(zoom);
    zoom->valueInterface()->setCurrentValue(4);
    EXPECT_DOUBLE_EQ(*view->model().timelineScale, 4);
    EXPECT_TRUE(announced.contains(QAccessible::ValueChanged, "Zoom"));
}

}  // namespace
}  // namespace tembrix
