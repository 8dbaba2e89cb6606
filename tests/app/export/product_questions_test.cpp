#include "app/export/product_questions.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include "app/export/lower_bar.h"
#include "app/window_tests.h"
#include "fakes/fake_panels.h"
#include "fakes/fake_texts.h"

namespace tembrix {
namespace {

using File = std::optional<std::filesystem::path>;

struct ProductQuestionsTest : testing::Test {
    FakePanels panels;
    FakeTexts texts;
    ProductQuestions questions{panels, texts, "list"};
    QWidget list;
    std::unique_ptr<QWidget> timelines = std::make_unique<QWidget>();
    std::vector<File> answers;
    int pauses = 0;

    ProductQuestionsTest() {
        questions.pauseVideo = [this] {
            ++pauses;
            return Subscription([this] { --pauses; });
        };
        for (auto* window : {&list, timelines.get()}) {
            window->setObjectName(window == &list ? "list" : "timelines");
            window->resize(800, 300);
            window->show();
        }
    }
    void askFrom(QWidget& active) {
        ASSERT_TRUE(activate(active));
        questions.save({"Save", "film.mp4", "mp4", "timelines"},
                       [this](const File& file) { answers.push_back(file); });
    }
    static bool offers(const QWidget& window) {
        const auto* bar = child<LowerBar>(window, "productReady");
        return bar && bar->isVisible() && window.rect().contains(bar->geometry());
    }
    static void press(const QWidget& window, const char* button) {
        QTest::mouseClick(child(window, button), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

TEST_F(ProductQuestionsTest, WhatIsNotSavedStaysOnOfferUntilItIs) {
    askFrom(*timelines);
    ASSERT_EQ(panels.saves.size(), 1U) << "the window is in use";
    EXPECT_EQ(pauses, 1);
    for (QWidget* window : {timelines.get(), &list}) {
        panels.answerSave(std::nullopt);
        EXPECT_TRUE(answers.empty());
        EXPECT_EQ(pauses, 0) << "the video goes on under the bar";
        EXPECT_TRUE(offers(list) && offers(*timelines));
        EXPECT_EQ(unnamedControls(*timelines), QStringList());
        press(*window, "productReadySave");
        ASSERT_EQ(panels.saves.size(), 1U);
        EXPECT_FALSE(offers(list) || offers(*timelines));
    }
    panels.answerSave("/film.mp4");
    EXPECT_EQ(answers, std::vector<File>{"/film.mp4"});
}

TEST_F(ProductQuestionsTest, NothingComesUpOverOtherWork) {
    askFrom(list);
    EXPECT_TRUE(panels.saves.empty());
    EXPECT_TRUE(offers(list) && offers(*timelines));
    QTest::keyClick(&list, Qt::Key_Escape);
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(QApplication::activeWindow(), &list);
    EXPECT_TRUE(offers(list) && answers.empty());

    press(list, "productReadyDiscard");
    panels.answerConfirm(false);
    EXPECT_TRUE(offers(list) && answers.empty());
    press(list, "productReadyDiscard");
    panels.answerConfirm(true);
    EXPECT_FALSE(offers(list));
    EXPECT_EQ(answers, std::vector<File>{std::nullopt});
}

TEST_F(ProductQuestionsTest, AQuestionEndsWithItsWindow) {
    askFrom(list);
    timelines.reset();
    EXPECT_EQ(answers, std::vector<File>{std::nullopt});
    EXPECT_FALSE(offers(list)) << "whoever asked asks again over another window";
}

TEST_F(ProductQuestionsTest, AfterAMessageThePanelThatItAnnouncesOpens) {
    ASSERT_TRUE(activate(list));
    questions.alert(
        "Not saved", "Full", [this] { askFrom(list); }, "timelines");
    panels.closeAlert();
    EXPECT_EQ(panels.saves.size(), 1U);
}

}  // namespace
}  // namespace tembrix
