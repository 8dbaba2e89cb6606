#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include "app/window_keys.h"
#include "app/window_tests.h"
#include "core/keyboard/text_focus.h"
#include "fakes/captured_log.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_user_defaults.h"

namespace tembrix {
namespace {

// A window that refuses to close, like the player's while its editor is open.
class Stubborn final : public QWidget {
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
};
// A sheet that refuses to close while it works.
class Busy final : public QDialog {
  public:
    using QDialog::QDialog;
    void reject() override { ++asked; }
    int asked = 0;
};

TEST(Quit, ItsKeyEndsSheetsAndTheProgramFromAnyWindowAndNothingRefuses) {
    MemoryUserDefaults defaults;
    CapturedLog log;
    CommandKeys stored(defaults, log);
    const Settings settings(defaults, log);
    Commands commands(stored, settings);
    FakeTexts texts;
    FocusStateManager focus;
    const WindowKeys keys(commands, focus, texts);
    Stubborn window;
    window.show();
    QDialog sheet(&window);
    auto* field = new QLineEdit(&sheet);
    Busy busy(&sheet);
    for (QDialog* modal : {static_cast<QDialog*>(&sheet), static_cast<QDialog*>(&busy)}) {
        modal->setWindowModality(Qt::WindowModal);
        modal->open();
        ASSERT_TRUE(activate(*modal));
        if (modal == &sheet)
            field->setFocus();
        bool pressed = false;
        QTimer::singleShot(0, modal, [&] {
            pressed = true;
            QTest::keyClick(modal->windowHandle(), Qt::Key_Q, Qt::ControlModifier);
        });
        QTimer::singleShot(5000, &window, [] { QApplication::exit(1); });
        EXPECT_EQ(QApplication::exec(), 0);
        EXPECT_TRUE(pressed);
        EXPECT_FALSE(sheet.isVisible());
        if (modal == &sheet)
            sheet.open();
    }
    EXPECT_EQ(busy.asked, 1);
}

}  // namespace
}  // namespace tembrix
