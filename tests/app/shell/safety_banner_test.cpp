#include "app/widgets/safety_banner.h"

#include <QApplication>
#include <QLabel>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "app/shell/window_factory.h"
#include "app/widgets/qt_text.h"
#include "core/shell/window_table.h"
#include "core/storage/storage_health.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

TEST(SafetyBanner, EveryProjectWindowSaysThatMarksAreNotSafeUntilTheyAre) {
    MemoryUserDefaults defaults;
    VirtualScheduler scheduler;
    FakeTexts texts;
    StorageHealth health(defaults, scheduler);
    const auto empty = [](QWidget* parent) { return new QWidget(parent); };
    QtWindowFactory factory;
    factory.setMakers(
        {{WindowKind::video, empty}, {WindowKind::control, empty}, {WindowKind::tagLibrary, empty}},
        {.banner = [&](QWidget* parent) { return new SafetyBanner(health, texts, parent); }});
    std::vector<std::unique_ptr<ProjectWindow>> windows;
    for (const auto kind : {WindowKind::video, WindowKind::control, WindowKind::tagLibrary})
        windows.push_back(factory.make(windowRow(kind), "title", {}));
    const auto shown = [] {
        std::vector<QString> found;
        for (const QWidget* window : QApplication::topLevelWidgets())
            for (const auto* banner : window->findChildren<QLabel*>("safetyBanner"))
                if (banner->isVisibleTo(window))
                    found.push_back(banner->accessibleName());
        return found;
    };
    EXPECT_TRUE(shown().empty());
    defaults.refuse("disk full");
    defaults.setText("key", "value");
    scheduler.run();
    EXPECT_EQ(shown(), std::vector<QString>(3, qtext(texts.text("marksNotSafeOther"))));
    defaults.refuse({});
    defaults.makeDurable();
    scheduler.run();
    EXPECT_TRUE(shown().empty());
    health.noteDocuments(false);
    scheduler.run();
    EXPECT_EQ(shown(), std::vector<QString>(3, qtext(texts.text("marksNotInDocuments"))));
    health.noteDocuments(true);
    scheduler.run();
    EXPECT_TRUE(shown().empty());
}

}  // namespace
}  // namespace tembrix
