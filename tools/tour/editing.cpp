// Edits marks and timelines.

#include <QApplication>
#include <QDialog>
#include <QPushButton>

#include "app/control/timeline_canvas.h"
#include "core/playback/video_player_manager.h"
#include "tour/stage.h"

namespace tembrix::tour {

namespace {

TimelineCanvas* canvas(const Stage& stage) {
    return stage.driver.window("timelines")->findChild<TimelineCanvas*>();
}

// The middle of the visible part of a stamp.
QPoint middleOf(const Stage& stage, std::size_t row, std::size_t stamp) {
    const TimelineCanvas* axis = canvas(stage);
    return axis->stampArea(row, stamp).intersected(axis->rect()).center().toPoint();
}

// Chooses the first entry of the open sheet that is not chosen yet.
void chooseOneMore(const Stage& stage) {
    for (auto* button : stage.driver.sheet()->findChildren<QPushButton*>()) {
        if (button->isCheckable() && !button->isChecked())
            return stage.driver.clickAt(button, button->rect().center());
    }
    throw Failure("the sheet has nothing to choose");
}

// Opens the sheet for the labels or the events of a stamp, chooses one more and accepts.
void editItems(const Stage& stage, const QString& entry, const QString& picture) {
    stage.driver.openMenuAt(canvas(stage), middleOf(stage, 1, 1));
    stage.driver.chooseEntry(entry);
    chooseOneMore(stage);
    stage.driver.picture(picture, stage.driver.sheet());
    stage.driver.key(Qt::Key_Return);
    stage.driver.noSheet();
}

void lineMenu(const Stage& stage, const QString& entry) {
    stage.driver.openMenu();
    stage.driver.chooseEntry(entry);
}

}  // namespace

void edit(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("Undo takes the last mark back, redo brings it again");
    driver.activate("timelines");
    driver.key(Qt::Key_Z, Qt::ControlModifier);
    driver.waitFor("the undo", [&] { return stage.stampCount() == 2; });
    driver.key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    driver.waitFor("the redo", [&] { return stage.stampCount() == 3; });

    driver.say("A second timeline; the interval is moved to it and its end dragged");
    stage.addLine("Possession");
    TimelineCanvas* axis = canvas(stage);
    QRectF place = axis->stampArea(1, 2);
    const QPoint middle = place.center().toPoint();
    const QPoint oneRow(0, TimelineMetrics::rowHeight);
    driver.drag(axis, middle, middle + oneRow, [&] { driver.screen("a-tag-is-moved"); });
    driver.waitFor("the move", [&] { return stage.lines()[2]->stamps.size() == 1; });

    const auto length = [&] { return stage.lines()[2]->stamps.front()->length(); };
    const double before = length();
    place = axis->stampArea(2, 0);
    driver.clickAt(axis, place.center().toPoint());
    driver.waitFor("the stamp to be chosen",
                   [&] { return stage.project().timeline.selectedStampID->has_value(); });
    stage.project().player.pause();
    const QPoint grip(qRound(place.right()) - 3, qRound(place.center().y()));
    driver.drag(axis, grip, grip + QPoint(90, 0), [&] { driver.screen("an-edge-is-dragged"); });
    driver.waitFor("the new end", [&] { return length() > before + 1; });

    driver.say("The menu of a stamp, and the sheets of its labels and time events");
    driver.activate("timelines");
    driver.openMenuAt(axis, middleOf(stage, 1, 1));
    driver.screen("stamp-menu");
    driver.key(Qt::Key_Escape);
    const auto stamp = [&] { return stage.lines()[1]->stamps[1]; };
    const auto labels = stamp()->labels.size();
    editItems(stage, "timelineButtonEditLabels", "edit-labels");
    driver.waitFor("the label", [&] { return stamp()->labels.size() == labels + 1; });
    const auto events = stamp()->timeEvents.size();
    editItems(stage, "timelineButtonEditTimeEvents", "edit-time-events");
    driver.waitFor("the event", [&] { return stamp()->timeEvents.size() == events + 1; });
}

void arrangeLines(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("Lines are renamed, reordered and deleted by keyboard; the deletion is undone");
    driver.activate("timelines");
    QWidget* names = driver.control("timelineNames");
    names->setFocus();
    driver.key(Qt::Key_End);
    lineMenu(stage, "editName");
    driver.sheet();
    driver.type("Ball possession");
    driver.picture("rename-timeline", driver.sheet());
    driver.key(Qt::Key_Return);
    driver.noSheet();
    driver.waitFor("the new name", [&] { return stage.lines()[2]->name == "Ball possession"; });
    names->setFocus();
    driver.key(Qt::Key_Up, Qt::AltModifier);
    driver.waitFor("the new order", [&] { return stage.lines()[1]->name == "Ball possession"; });
    driver.screen("reordered");
    lineMenu(stage, "timelineButtonDeleteTimeline");
    driver.waitFor("the deletion", [&] { return stage.lines().size() == 2; });
    driver.picture("deleted-timeline", driver.window("timelines"));
    driver.key(Qt::Key_Z, Qt::ControlModifier);
    driver.key(Qt::Key_Z, Qt::ControlModifier);
    driver.waitFor("the line and the order as they were",
                   [&] { return stage.lines().size() == 3 && stage.lines()[1]->name == "Attack"; });

    driver.say("In the mode by tag every tag makes its own line");
    driver.click("fullControlModeTagBased");
    driver.activate("tagLibrary");
    driver.key(Qt::Key_N);
    driver.waitFor("the tag's line", [&] { return stage.lines().size() == 4; });
    driver.screen("by-tag");
    driver.activate("timelines");
    driver.click("fullControlModeStandard");
    stage.waitForPlaying();
    stage.project().player.pause();
}

void lookCloser(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("Zoom, and what the pointer stands on");
    driver.activate("timelines");
    for (int i = 0; i < 4; ++i)
        driver.key(Qt::Key_Plus, Qt::ControlModifier);
    driver.hover(canvas(stage), middleOf(stage, 1, 1));
    driver.screen("zoomed");
    for (int i = 0; i < 4; ++i)
        driver.key(Qt::Key_Minus, Qt::ControlModifier);
}

}  // namespace tembrix::tour
