#include "app/export/selection_sheets.h"

#include <QLineEdit>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/export/export_mode_sheet.h"
#include "app/export/export_window.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

struct SelectionSheets : testing::Test, ExportWindow {
    std::vector<std::string> calls;

    std::vector<Tag> manyTags() {
        std::vector<Tag> tags;
        for (const char* name : {"Pass", "Long pass", "Shot", "Дальний удар", "Corner", "Foul",
                                 "Save", "Cross", "Tackle", "Удар головой"})
            tags.push_back(tag(name, name));
        return tags;
    }
    TagSelectionSheetView* showTags(std::vector<Tag> tags) {
        auto* view = new TagSelectionSheetView(
            &window, project.texts, project.focus, std::move(tags),
            [](const Tag& each) { return each.name.find("ass") != std::string::npos; });
        view->onSelect = [this](const Tag& each) { calls.push_back("select " + each.name); };
        view->onSelectWithLabels = [this](const Tag& each) {
            calls.push_back("labels " + each.name);
        };
        view->present();
        EXPECT_TRUE(sheet());
        return view;
    }
};

TEST_F(SelectionSheets, AClickChoosesATagAndItsLinkAsksForLabels) {
    showTags(manyTags());
    picture(*sheet(), "export-tags");
    clickRow(2);
    EXPECT_EQ(title(), "none");
    showTags(manyTags());
    clickRow(1, 1);
    showTags(manyTags());
    clickRow(2, 1);  // has no labels: a click anywhere in the row chooses it
    showTags(manyTags());
    press("collectionsButtonCancel");
    EXPECT_THAT(calls, ElementsAre("select Shot", "labels Long pass", "select Shot"));
}

TEST_F(SelectionSheets, TypingFindsInALongListWithoutAMouse) {
    showTags(manyTags());
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "exportSearch");
    EXPECT_TRUE(project.focus.isAnyTextFieldFocused.get());
    QTest::keyClicks(QApplication::focusWidget(), "PASS");
    EXPECT_EQ(rowTexts(), QStringList({"Pass", "Long pass"}));
    key(Qt::Key_Down);
    EXPECT_FALSE(project.focus.isAnyTextFieldFocused.get());
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    EXPECT_THAT(calls, ElementsAre("select Long pass"));

    showTags(manyTags());
    QTest::keyClicks(QApplication::focusWidget(), "nowhere");
    EXPECT_FALSE(rows()->isVisible());
    EXPECT_TRUE(child(*sheet(), "exportNoTags")->isVisible());
    key(Qt::Key_Return);
    EXPECT_EQ(calls.size(), 1U);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), "long");
    EXPECT_TRUE(child(*sheet(), "exportTagWithLabels")->isEnabled());
    key(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), rows());
    key(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "exportTagWithLabels");
    key(Qt::Key_Space);
    EXPECT_THAT(calls, ElementsAre("select Long pass", "labels Long pass"));
}

TEST_F(SelectionSheets, AShortListHasNoSearchAndAnEmptyOneSaysSo) {
    showTags({pass, shot});
    EXPECT_EQ(QApplication::focusWidget(), rows());
    EXPECT_FALSE(child(*sheet(), "exportSearch"));
    EXPECT_FALSE(child(*sheet(), "exportTagWithLabels")->isEnabled());
    key(Qt::Key_Escape);
    EXPECT_EQ(title(), "none");
    showTags({});
    picture(*sheet(), "export-no-tags");
    EXPECT_TRUE(child(*sheet(), "exportNoTags")->isVisible());
    EXPECT_FALSE(child(*sheet(), "clickTagToExport"));
    key(Qt::Key_Escape);
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(SelectionSheets, ManyAreTickedByClickOrSpaceAndKeepTheirTicksWhileSearching) {
    std::vector<Label> labels;
    for (const char* name : {"a1", "a2", "a3", "b1", "b2", "b3", "c1", "c2", "c3"})
        labels.push_back({name, name, ""});
    std::vector<std::string> picked;
    auto* view = new MultiLabelSelectionSheetView(&window, project.texts, project.focus, labels);
    view->onDone = [&](const std::vector<Label>& result) {
        for (const auto& each : result)
            picked.push_back(each.id);
    };
    view->onSkip = [&] { picked.push_back("skip"); };
    view->present();
    ASSERT_TRUE(sheet());
    auto* done = child<QPushButton>(*sheet(), "done");
    EXPECT_FALSE(done->isEnabled()) << "no label would match no stamp";
    clickRow(7);
    EXPECT_TRUE(done->isEnabled());
    clickRow(8);
    clickRow(8);
    QTest::keyClicks(child(*sheet(), "exportSearch"), "b");
    rows()->setFocus();
    key(Qt::Key_Down);
    key(Qt::Key_Space);
    picture(*sheet(), "export-labels");
    key(Qt::Key_Return);
    EXPECT_EQ(title(), "none");
    EXPECT_THAT(picked, ElementsAre("b2", "c2"));
}

TEST_F(SelectionSheets, EveryControlIsNamed) {
    auto* view = new MultiTagSelectionSheetView(&window, project.texts, project.focus, manyTags());
    view->present();
    ASSERT_TRUE(sheet());
    EXPECT_EQ(unnamedControls(*sheet()), QStringList());
    view->reject();
    showTags(manyTags());
    EXPECT_EQ(unnamedControls(*sheet()), QStringList());
    sheet()->close();
    auto* mode = new ExportModeSelectionSheet(&window, project.texts, true, false);
    mode->present();
    ASSERT_TRUE(sheet());
    EXPECT_EQ(unnamedControls(*mode), QStringList());
    EXPECT_FALSE(mode->exportWithDrawings()) << "nothing to switch without drawings";
}

}  // namespace
}  // namespace tembrix
