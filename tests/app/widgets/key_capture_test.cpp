#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include "app/widgets/key_capture_view.h"
#include "fakes/fake_texts.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

// Key presses for the keys in this test.
KeyPress translate(const QKeyEvent& event) {
    const auto held = event.modifiers();
    const KeyModifiers modifiers{bool(held & Qt::MetaModifier), bool(held & Qt::AltModifier),
                                 bool(held & Qt::ShiftModifier), bool(held & Qt::ControlModifier)};
    switch (event.key()) {
        case Qt::Key_A:
            return {0, modifiers, "a"};
        case Qt::Key_Tab:
            return {key::tab, modifiers, "\t"};
        case Qt::Key_Escape:
            return {key::escape, modifiers, "\x1b"};
        case Qt::Key_Left:
            return {key::left, modifiers, "\uF702"};
        default:
            return {-1, modifiers, ""};
    }
}

struct KeyCaptureTest : testing::Test {
    VirtualScheduler scheduler;
    FakeTexts texts;
    KeyCapture capture{scheduler};
    QWidget window;
    KeyCaptureView* view = new KeyCaptureView(capture, &translate, texts, "hotkey", &window);
    QLineEdit* other = new QLineEdit(&window);

    void SetUp() override {
        auto* column = new QVBoxLayout(&window);
        column->addWidget(view);
        column->addWidget(other);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    // Sends an event with the modifiers held before it, as the window system does.
    void send(QEvent::Type type, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QKeyEvent event(type, key, modifiers);
        QApplication::sendEvent(view, &event);
    }
    // Records one key press in a capture of its own.
    std::string recorded(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        capture.start();
        send(QEvent::KeyPress, key, modifiers);
        EXPECT_TRUE(*capture.isCapturing);
        scheduler.advance(0.06);
        return capture.keyString->value_or("");
    }
};

TEST_F(KeyCaptureTest, GrabsMouseAndKeysOnlyDuringACapture) {
    EXPECT_EQ(view->accessibleName(), "hotkey");
    EXPECT_EQ(view->shownText(), "hotkey");
    EXPECT_EQ(window.childAt(view->geometry().center()), nullptr);
    view->setFocus();
    QTest::keyClick(view, Qt::Key_A);
    EXPECT_FALSE(*capture.keyString);
    QTest::keyClick(view, Qt::Key_Tab);
    EXPECT_TRUE(other->hasFocus());

    capture.start();
    EXPECT_TRUE(view->hasFocus());
    EXPECT_EQ(window.childAt(view->geometry().center()), view);
    other->setFocus();
    scheduler.run();
    EXPECT_FALSE(*capture.isCapturing);
    EXPECT_EQ(window.childAt(view->geometry().center()), nullptr);
}

TEST_F(KeyCaptureTest, RecordsKeysThatOtherwiseMoveTheFocusOrCloseASheet) {
    EXPECT_EQ(recorded(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier), "⌘+⇧+A");
    EXPECT_EQ(view->shownText(), "Ctrl+⇧A");
    EXPECT_EQ(view->accessibleDescription(), "Ctrl+⇧A");
    EXPECT_FALSE(*capture.isCapturing);
    EXPECT_EQ(recorded(Qt::Key_Tab), "Tab");
    EXPECT_TRUE(view->hasFocus());
    EXPECT_EQ(recorded(Qt::Key_Escape), "Esc");
}

TEST_F(KeyCaptureTest, ModifiersStillHeldWhenOneIsReleasedAreAHotKey) {
    capture.start();
    QTest::keyClick(view, Qt::Key_Left);  // cannot be recorded
    scheduler.advance(1);
    EXPECT_TRUE(*capture.isCapturing);
    send(QEvent::KeyPress, Qt::Key_Control);
    send(QEvent::KeyPress, Qt::Key_Shift, Qt::ControlModifier);
    EXPECT_FALSE(*capture.keyString);
    send(QEvent::KeyRelease, Qt::Key_Shift, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(*capture.keyString, "⌘");
    scheduler.advance(0.11);
    EXPECT_FALSE(*capture.isCapturing);
}

}  // namespace
}  // namespace tembrix
