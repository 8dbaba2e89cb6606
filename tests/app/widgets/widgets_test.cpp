#include <QAccessible>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <gtest/gtest.h>
#include <vector>

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/flow_layout.h"
#include "app/widgets/segmented_switch.h"
#include "app/widgets/sheet.h"
#include "app/widgets/tabular_label.h"
#include "app/widgets/text_focus.h"
#include "core/keyboard/hot_key_manager.h"
#include "fakes/fake_texts.h"

namespace tembrix {
namespace {

class WidgetsTest : public testing::Test {
  protected:
    FakeTexts texts;
    QWidget window;

    void show(QWidget& widget) {
        widget.show();
        widget.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&widget));
    }
};

class SheetTest : public WidgetsTest {
  protected:
    void SetUp() override {
        show(window);
        sheet = new Sheet(&window, texts, "renameTitle");
        field = new QLineEdit;
        sheet->content()->addWidget(field);
        cancel = sheet->addCancelButton("cancelButtonTitle");
        accept = sheet->addAcceptButton("saveButtonTitle");
        QObject::connect(sheet, &QDialog::finished, [this](int result) { ends.push_back(result); });
        sheet->present();
        ASSERT_TRUE(QTest::qWaitForWindowActive(sheet.data()));
    }

    QPointer<Sheet> sheet;
    QLineEdit* field = nullptr;
    QPushButton* cancel = nullptr;
    QPushButton* accept = nullptr;
    std::vector<int> ends;
};

TEST_F(SheetTest, BlocksOnlyItsWindowAndIsNamed) {
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(sheet->objectName(), "renameTitle");
    EXPECT_EQ(sheet->accessibleName(), "renameTitle");
    EXPECT_EQ(accept->accessibleName(), "saveButtonTitle");
    EXPECT_TRUE(ends.empty());
}

TEST_F(SheetTest, ReturnInAFieldPressesTheDefaultButton) {
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(ends, std::vector<int>{QDialog::Accepted});
    EXPECT_TRUE(QTest::qWaitFor([&] { return sheet.isNull(); }));
}

TEST_F(SheetTest, ReturnOnAButtonPressesThatButton) {
    cancel->setFocus();
    QTest::keyClick(cancel, Qt::Key_Return);
    EXPECT_EQ(ends, std::vector<int>{QDialog::Rejected});
}

TEST_F(SheetTest, EscapeRejects) {
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(ends, std::vector<int>{QDialog::Rejected});
    EXPECT_TRUE(QTest::qWaitFor([&] { return sheet.isNull(); }));
}

TEST_F(SheetTest, ReturnDestroysNothing) {
    sheet->reject();
    sheet = new Sheet(&window, texts, "deleteVideoTitle");
    sheet->addCancelButton("cancelButtonTitle");
    accept = sheet->addAcceptButton("deleteButtonTitle", ButtonLook::destructive);
    QObject::connect(sheet, &QDialog::finished, [this](int result) { ends.push_back(result); });
    sheet->present();
    ASSERT_TRUE(QTest::qWaitForWindowActive(sheet.data()));
    QTest::keyClick(sheet->windowHandle(), Qt::Key_Return);
    EXPECT_EQ(ends, std::vector<int>(2, QDialog::Rejected));
}

class FlowLayoutTest : public testing::Test {
  protected:
    QWidget box;
    FlowLayout* flow = new FlowLayout(10, &box);
    std::vector<QWidget*> cells;

    void add(int count, int width, int height) {
        for (int i = 0; i < count; ++i) {
            auto* cell = new QWidget;
            cell->setMinimumSize(width, height);
            flow->addWidget(cell);
            cells.push_back(cell);
        }
    }
};

TEST_F(FlowLayoutTest, BreaksRowsWhereTheNextDoesNotFit) {
    add(3, 50, 20);
    add(1, 200, 40);
    for (auto* cell : cells)
        cell->setMaximumSize(cell->minimumSize());
    EXPECT_EQ(flow->heightForWidth(170), 20 + 10 + 40);  // three fit exactly
    EXPECT_EQ(flow->heightForWidth(169), 20 + 10 + 20 + 10 + 40);
    EXPECT_EQ(flow->heightForWidth(400), 40);
    EXPECT_EQ(flow->minimumSize().width(), 200);
    box.setGeometry(0, 0, 170, 100);
    flow->activate();
    EXPECT_EQ(cells[2]->x(), 120);
    EXPECT_EQ(cells[3]->pos(), QPoint(0, 30));
    cells[0]->setHidden(true);
    EXPECT_EQ(flow->heightForWidth(110), 20 + 10 + 40);
    delete flow->takeAt(3);
    EXPECT_EQ(flow->heightForWidth(110), 20);
    EXPECT_EQ(flow->takeAt(7), nullptr);
}

TEST_F(FlowLayoutTest, FilledRowsShareTheSpareWidth) {
    flow->setFillsRows(true);
    add(4, 100, 20);
    for (auto* cell : cells)
        cell->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    box.resize(350, 200);
    box.show();
    EXPECT_EQ(cells[2]->y(), 0);
    EXPECT_EQ(cells[2]->geometry().right() + 1, 350);
    EXPECT_EQ(cells[3]->y(), 30);
    EXPECT_EQ(cells[3]->width(), cells[0]->width());
}

TEST_F(WidgetsTest, TextFieldsTellWhoHasTheKeyboard) {
    FocusStateManager focus;
    auto* column = new QVBoxLayout(&window);
    auto* first = new FocusAwareLineEdit(focus);
    auto* second = new FocusAwareLineEdit(focus);
    auto* button = new QPushButton("b");
    for (QWidget* each : {static_cast<QWidget*>(button), static_cast<QWidget*>(first),
                          static_cast<QWidget*>(second)})
        column->addWidget(each);
    show(window);
    button->setFocus();
    EXPECT_FALSE(*focus.isAnyTextFieldFocused);
    first->setFocus();
    EXPECT_TRUE(*focus.isAnyTextFieldFocused);
    second->setFocus();
    EXPECT_TRUE(*focus.isAnyTextFieldFocused);
    second->hide();  // the previous field gets the focus back
    first->clearFocus();
    EXPECT_FALSE(*focus.isAnyTextFieldFocused);
    first->setFocus();
    delete first;
    EXPECT_FALSE(*focus.isAnyTextFieldFocused);
    second->show();
    second->setFocus();
    EXPECT_TRUE(*focus.isAnyTextFieldFocused);
    window.hide();
    EXPECT_FALSE(*focus.isAnyTextFieldFocused);
}

TEST_F(WidgetsTest, ElidedTextsAreReadWhole) {
    ElidedLabel label;
    const QString whole = "Спартак – Зенит\n12.05.2024, второй тайм";
    label.setFullText(whole);
    const int needed = label.sizeHint().width();
    label.resize(needed, 20);
    label.show();
    EXPECT_EQ(label.text(), QString(whole).replace('\n', ' '));
    EXPECT_TRUE(label.toolTip().isEmpty());
    label.resize(needed / 2, 20);
    EXPECT_TRUE(label.text().endsWith("…"));
    EXPECT_EQ(label.accessibleName(), label.fullText());
    EXPECT_EQ(label.toolTip(), label.fullText());
    label.resize(needed, 20);
    EXPECT_EQ(label.text(), label.fullText());
}

TEST_F(WidgetsTest, ASwitchReportsOnlyChoicesOfTheUser) {
    SegmentedSwitch filter(texts, {"all", "favorites", "recent"});
    std::vector<int> choices;
    QObject::connect(&filter, &SegmentedSwitch::chosenByUser,
                     [&](int index) { choices.push_back(index); });
    show(filter);
    EXPECT_EQ(filter.chosen(), 0);
    filter.choose(2);
    EXPECT_EQ(filter.chosen(), 2);
    auto* favorites = filter.findChild<QToolButton*>("favorites");
    ASSERT_NE(favorites, nullptr);
    EXPECT_EQ(favorites->accessibleName(), "favorites");
    QTest::mouseClick(favorites, Qt::LeftButton);
    QTest::mouseClick(favorites, Qt::LeftButton);
    EXPECT_EQ(filter.chosen(), 1);
    EXPECT_EQ(choices.front(), 1);
    favorites->setFocus();
    QTest::keyClick(favorites, Qt::Key_Right);
    EXPECT_EQ(filter.chosen(), 2);
}

TEST(TabularLabel, RunningDigitsDoNotShift) {
    const QFontMetricsF metrics(theme::font(theme::timeCodeSize));
    EXPECT_DOUBLE_EQ(tabularWidth(metrics, "11:11:11"), tabularWidth(metrics, "00:48:59"));
    TabularLabel label;
    label.setText("00:00:00");
    const auto before = label.sizeHint();
    label.setText("11:11:11");
    EXPECT_EQ(label.sizeHint(), before);
    label.setText("1");
    EXPECT_EQ(label.sizeHint(), before);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name), "1");
}

}  // namespace
}  // namespace tembrix
