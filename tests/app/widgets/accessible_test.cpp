// What assistive programs are told about buttons, values, groups and lists, and what they can do.

#include "app/widgets/accessible.h"

#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include "app/accessible_tree.h"
#include "app/widgets/controls.h"
#include "app/widgets/segmented_switch.h"
#include "app/widgets/sheet.h"
#include "app/widgets/tabular_label.h"
#include "app/window_tests.h"
#include "fakes/fake_texts.h"

namespace tembrix {
namespace {

using enum QAccessible::Role;
using tree::Node;

Node nodeOf(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget);
}

TEST(Accessible, WindowsSheetsAndNamedGroupsHaveTheirRoles) {
    FakeTexts texts;
    QWidget window;
    auto* row = new QWidget(&window);
    auto* picture = new QWidget(&window);
    picture->setAccessibleName("Picture");
    tellRole(picture, Graphic);
    SegmentedSwitch filter(texts, {"all", "recent"}, &window);
    filter.setAccessibleName("Filter");
    EXPECT_EQ(nodeOf(window)->role(), Window);
    EXPECT_EQ(nodeOf(*row)->role(), Client);
    EXPECT_EQ(nodeOf(*picture)->role(), Graphic);
    EXPECT_EQ(nodeOf(filter)->role(), Grouping);
    Sheet sheet(&window, texts, "title");
    EXPECT_EQ(nodeOf(sheet)->role(), Dialog);
    EXPECT_TRUE(nodeOf(sheet)->state().modal);
}

TEST(Accessible, AnActionOfAButtonDoesWhatAClickDoes) {
    FakeTexts texts;
    QWidget window;
    SegmentedSwitch filter(texts, {"all", "recent"}, &window);
    int chosen = -1;
    QObject::connect(&filter, &SegmentedSwitch::chosenByUser, [&](int index) { chosen = index; });
    window.show();
    const Node recent = tree::find(nodeOf(window), RadioButton, "recent");
    ASSERT_TRUE(recent);
    Announcements announced;
    EXPECT_TRUE(tree::act(recent, QAccessibleActionInterface::toggleAction()));
    EXPECT_EQ(chosen, 1);
    EXPECT_TRUE(recent->state().checked);
    EXPECT_TRUE(announced.contains(QAccessible::StateChanged, "recent"));
    EXPECT_FALSE(tree::find(nodeOf(window), RadioButton, "all")->state().checked);

    QToolButton speed(&window);
    nameControl(&speed, "speed", "Speed");
    QMenu menu(&speed);
    menu.addAction("Fast");
    speed.setMenu(&menu);
    speed.setPopupMode(QToolButton::InstantPopup);
    speed.show();
    ASSERT_EQ(nodeOf(speed)->role(), ButtonMenu);
    EXPECT_TRUE(tree::act(nodeOf(speed)));
    EXPECT_TRUE(tree::find(nodeOf(window), MenuItem, "Fast"));
    menu.close();

    speed.setEnabled(false);
    EXPECT_TRUE(nodeOf(speed)->state().disabled);
    EXPECT_FALSE(tree::act(nodeOf(speed)));
}

TEST(Accessible, StatesKeysAndValuesAreToldAndAnnounced) {
    QWidget window;
    auto* play = new QPushButton("&Play", &window);
    auto* time = new TabularLabel(&window);
    time->setAccessibleName("Time");
    double now = 1;
    AccessibleValue value(
        time, Slider,
        [&] {
            return AccessibleValue::Reading{now, 0, 90};
        },
        [&](double seconds) { now = seconds; });
    window.show();
    tellChecked(play, false);
    tellExpanded(play, true);
    tellKey(play, "Ctrl+P");
    const Node button = nodeOf(*play);
    EXPECT_EQ(tree::name(button), "Play");
    EXPECT_EQ(button->text(QAccessible::Accelerator), "Ctrl+P");
    EXPECT_TRUE(button->state().checkable && !button->state().checked);
    EXPECT_TRUE(button->state().expandable && button->state().expanded);
    Announcements announced;
    tellChecked(play, true);
    EXPECT_TRUE(button->state().checked);
    EXPECT_TRUE(announced.contains(QAccessible::StateChanged, "Play"));
    announced.clear();
    tellExpanded(play, true);
    EXPECT_FALSE(announced.contains(QAccessible::StateChanged, "Play")) << "nothing has changed";
    tellExpanded(play, false);
    EXPECT_TRUE(button->state().collapsed);
    EXPECT_TRUE(announced.contains(QAccessible::StateChanged, "Play"));

    const Node slider = nodeOf(*time);
    ASSERT_EQ(slider->role(), Slider);
    ASSERT_TRUE(slider->valueInterface());
    EXPECT_EQ(slider->valueInterface()->maximumValue().toDouble(), 90);
    value.changed(1);
    announced.clear();
    now = 1.5;
    value.changed(1);
    EXPECT_FALSE(announced.contains(QAccessible::ValueChanged, "Time")) << "less than a step";
    slider->valueInterface()->setCurrentValue(30);
    EXPECT_EQ(now, 30);
    value.changed(1);
    EXPECT_TRUE(announced.contains(QAccessible::ValueChanged, "Time"));
}

TEST(Accessible, RowsArePressedTickedAndFoundAlthoughOthersAreHidden) {
    QTreeWidget rows;
    rows.setAccessibleName("Tags");
    rows.setColumnCount(2);
    rows.setHeaderHidden(true);
    tellRows(&rows, {.pressedColumn = 1});
    for (const char* name : {"Pass", "Shot", "Goal"})
        (new QTreeWidgetItem(&rows, {name, "more"}))->setCheckState(0, Qt::Unchecked);
    rows.topLevelItem(0)->setHidden(true);
    rows.topLevelItem(2)->setText(1, {});
    std::vector<std::pair<QString, int>> clicked;
    QObject::connect(&rows, &QTreeWidget::itemClicked, [&](QTreeWidgetItem* row, int column) {
        clicked.emplace_back(row->text(0), column);
    });
    rows.show();
    ASSERT_TRUE(activate(rows));
    const Node list = nodeOf(rows);
    EXPECT_EQ(list->role(), List);
    EXPECT_FALSE(tree::find(list, ListItem, "Pass"));
    const Node shot = tree::find(list, ListItem, "Shot");
    ASSERT_TRUE(shot);
    EXPECT_TRUE(shot->state().checkable);
    EXPECT_EQ(list->child(list->indexOfChild(shot)), shot);
    EXPECT_EQ(list->indexOfChild(shot), 2) << "as the toolkit counts in its announcements";
    EXPECT_TRUE(tree::act(shot));
    EXPECT_TRUE(tree::act(tree::find(list, Button, "Shot: more")));
    EXPECT_EQ(clicked, (std::vector<std::pair<QString, int>>{{"Shot", 0}, {"Shot", 1}}));
    EXPECT_TRUE(shot->state().selected);
    EXPECT_TRUE(tree::faults(list).isEmpty()) << tree::faults(list).join("\n").toStdString();

    rows.clear();
    EXPECT_FALSE(tree::find(list, ListItem, "Shot"));
}

TEST(Accessible, ABoxTellsWhatItIsForAndWhatIsChosen) {
    QWidget window;
    auto* box = new QComboBox(&window);
    nameControl(box, "collections", "Collections");
    box->addItems({"Football", "Hockey"});
    int chosen = -1;
    QObject::connect(box, &QComboBox::activated, [&](int index) { chosen = index; });
    window.show();
    const Node node = tree::find(nodeOf(window), ComboBox, "Collections");
    ASSERT_TRUE(node);
    EXPECT_EQ(node->text(QAccessible::Value), "Football");
    EXPECT_TRUE(node->state().collapsed);
    EXPECT_TRUE(tree::act(node));
    EXPECT_TRUE(node->state().expanded);
    EXPECT_TRUE(tree::act(tree::find(node, ListItem, "Hockey")));
    EXPECT_EQ(chosen, 1);
    EXPECT_EQ(node->text(QAccessible::Value), "Hockey");
}

TEST(Accessible, TheExaminationFindsWhatIsWrong) {
    QWidget window;
    window.setAccessibleName("Window");
    auto* column = new QVBoxLayout(&window);
    column->addWidget(new QPushButton("Save"));
    window.show();
    EXPECT_TRUE(tree::faults(nodeOf(window)).isEmpty());
    column->addWidget(new QPushButton("Save"));
    column->addWidget(new QPushButton);
    auto* painted = new QWidget;
    painted->setFocusPolicy(Qt::StrongFocus);
    column->addWidget(painted);
    QApplication::processEvents();
    EXPECT_EQ(tree::faults(nodeOf(window)).size(), 3);
}

}  // namespace
}  // namespace tembrix
