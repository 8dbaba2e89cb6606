#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "adapters/qt/event_loop.h"
#include "adapters/qt/qt_panels.h"
#include "fakes/fake_panels.h"
#include "fakes/fake_texts.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

QDialog* panel(const char* name) {
    for (auto* widget : QApplication::topLevelWidgets())
        if (widget->objectName() == name && widget->isVisible())
            return qobject_cast<QDialog*>(widget);
    return nullptr;
}
void press(const char* dialog, const char* button) {
    ASSERT_NE(panel(dialog), nullptr);
    auto* found = panel(dialog)->findChild<QPushButton*>(button);
    ASSERT_NE(found, nullptr);
    found->click();
}

// Answers as the user would, and delivers the answer.
struct FakeKit {
    FakePanels panels;
    void confirm(bool yes) { panels.answerConfirm(yes); }
    void closeAlert() { panels.closeAlert(); }
    void chooseFile(const fs::path& file) { panels.answerOpen({file}); }
    void cancelOpen() { panels.answerOpen({}); }
    void saveAs(const fs::path& file) { panels.answerSave(file.string() + ".mp4"); }
    void cancelSave() { panels.answerSave({}); }
    void settle() {}
};
struct QtKit {
    FakeTexts texts;
    QtPanels panels{texts};
    void confirm(bool yes) { press("confirmPanel", yes ? "confirmButton" : "cancelButtonTitle"); }
    void closeAlert() { press("alertPanel", "okButtonTitle"); }
    void choose(const char* name, const fs::path& file) {
        auto* dialog = qobject_cast<QFileDialog*>(panel(name));
        ASSERT_NE(dialog, nullptr);
        dialog->setDirectory(QString::fromStdString(file.parent_path().string()));
        dialog->findChild<QLineEdit*>("fileNameEdit")
            ->setText(QString::fromStdString(file.filename().string()));
        // The slot that the button of the dialog calls.
        QMetaObject::invokeMethod(dialog, "accept");
    }
    void chooseFile(const fs::path& file) { choose("openPanel", file); }
    void cancelOpen() { panel("openPanel")->reject(); }
    void saveAs(const fs::path& file) { choose("savePanel", file); }
    void cancelSave() { panel("savePanel")->reject(); }
    void settle() {
        runUntil([] { return false; }, 30);
    }
};

template <class Kit>
class PanelsContract : public testing::Test {
  protected:
    TempFolder folder;
    Kit kit;
    Panels& panels = kit.panels;
};
using Kits = testing::Types<FakeKit, QtKit>;
TYPED_TEST_SUITE(PanelsContract, Kits);

TYPED_TEST(PanelsContract, QuestionsAnswerLaterAndOnce) {
    std::vector<bool> answers;
    int closed = 0;
    for (const bool yes : {true, false}) {
        this->panels.confirm("Удалить?", "Без возврата", "Удалить",
                             [&](bool answer) { answers.push_back(answer); });
        this->kit.settle();
        EXPECT_EQ(answers.size(), yes ? 0U : 1U);
        this->kit.confirm(yes);
        this->kit.settle();
    }
    EXPECT_EQ(answers, (std::vector{true, false}));
    this->panels.alert("Ошибка", "Текст", [&] { ++closed; });
    this->kit.settle();
    EXPECT_EQ(closed, 0);
    this->kit.closeAlert();
    this->kit.settle();
    EXPECT_EQ(closed, 1);
    this->panels.alert("Ошибка", "Текст");
    this->kit.settle();
    this->kit.closeAlert();
    this->kit.settle();
}

TYPED_TEST(PanelsContract, FilesComeBackByTheirNamesAndCancellingGivesNone) {
    const auto video = this->folder.write("Матч №1.mp4", "video");
    std::vector<std::vector<fs::path>> opened;
    OpenPanelRequest request;
    request.extensions = {"mp4", "mov"};
    request.kindName = "Видео";
    for (const bool cancels : {false, true}) {
        this->panels.open(request, [&](std::vector<fs::path> files) { opened.push_back(files); });
        this->kit.settle();
        cancels ? this->kit.cancelOpen() : this->kit.chooseFile(video);
        this->kit.settle();
    }
    ASSERT_EQ(opened.size(), 2U);
    EXPECT_EQ(opened[0], std::vector{video});
    EXPECT_TRUE(opened[1].empty());

    std::vector<std::optional<fs::path>> saved;
    for (const bool cancels : {false, true}) {
        this->panels.save({"Сохранить", "film.mp4", "mp4"},
                          [&](std::optional<fs::path> file) { saved.push_back(file); });
        this->kit.settle();
        cancels ? this->kit.cancelSave() : this->kit.saveAs(this->folder.path() / "Голы");
        this->kit.settle();
    }
    ASSERT_EQ(saved.size(), 2U);
    EXPECT_EQ(saved[0], this->folder.path() / "Голы.mp4");
    EXPECT_FALSE(saved[1]);
}

TEST(QtPanels, ADialogDestroyedWithItsWindowIsCanceled) {
    FakeTexts texts;
    QtPanels panels(texts);
    auto window = std::make_unique<QWidget>();
    window->show();
    window->activateWindow();
    ASSERT_TRUE(runUntil([&] { return QApplication::activeWindow() == window.get(); }));
    int answers = 0;
    bool yes = true;
    panels.confirm("t", "m", "c", [&](bool answer) {
        ++answers;
        yes = answer;
    });
    ASSERT_NE(panel("confirmPanel"), nullptr);
    EXPECT_EQ(panel("confirmPanel")->parentWidget(), window.get());
    EXPECT_EQ(panel("confirmPanel")->windowModality(), Qt::WindowModal);
    window.reset();
    runUntil([&] { return answers > 0; }, 1000);
    EXPECT_EQ(answers, 1);
    EXPECT_FALSE(yes);
}

TEST(QtPanels, APanelBelongsToTheWindowItNamesAndClosesWithIt) {
    FakeTexts texts;
    QtPanels panels(texts);
    auto owner = std::make_unique<QWidget>();
    owner->setObjectName("timelines");
    owner->show();
    QWidget active;
    active.show();
    active.activateWindow();
    ASSERT_TRUE(runUntil([&] { return QApplication::activeWindow() == &active; }));
    std::vector<std::optional<fs::path>> answers;
    const auto answer = [&](std::optional<fs::path> file) { answers.push_back(std::move(file)); };
    panels.save({"Save", "film.mp4", "mp4", "timelines"}, answer);
    ASSERT_NE(panel("savePanel"), nullptr);
    EXPECT_EQ(panel("savePanel")->parentWidget(), owner.get());
    owner.reset();
    EXPECT_EQ(panel("savePanel"), nullptr);
    runUntil([&] { return !answers.empty(); }, 1000);
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_FALSE(answers[0]);

    panels.save({"Save", "film.mp4", "mp4", "timelines"}, answer);
    ASSERT_NE(panel("savePanel"), nullptr);
    EXPECT_EQ(panel("savePanel")->parentWidget(), nullptr) << "no such window is open";
    panel("savePanel")->reject();
    runUntil([&] { return answers.size() == 2; }, 1000);
}

TEST(QtPanels, NoAnswerComesAfterTheEnd) {
    FakeTexts texts;
    int answers = 0;
    {
        QtPanels panels(texts);
        panels.alert("t", "m", [&] { ++answers; });
    }
    press("alertPanel", "okButtonTitle");
    runUntil([] { return false; }, 30);
    EXPECT_EQ(answers, 0);
}

TEST(QtPanels, TextsAreShownAsTheyAreAndRead) {
    FakeTexts texts;
    QtPanels panels(texts);
    panels.confirm("<b>Имя</b>", "a & b", "Удалить & закрыть", [](bool) {});
    auto* box = panel("confirmPanel");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->findChild<QLabel*>("panelTitle")->text(), "<b>Имя</b>");
    EXPECT_EQ(box->findChild<QLabel*>("panelTitle")->textFormat(), Qt::PlainText);
    auto* button = box->findChild<QPushButton*>("confirmButton");
    EXPECT_EQ(button->accessibleName(), "Удалить & закрыть");
    EXPECT_EQ(button->text(), "Удалить && закрыть");
    EXPECT_FALSE(button->isDefault()) << "the answer may destroy something";
    box->reject();
    runUntil([] { return panel("confirmPanel") == nullptr; });
}

}  // namespace
}  // namespace tembrix
