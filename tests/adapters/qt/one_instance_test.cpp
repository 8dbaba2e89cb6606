#include "adapters/qt/one_instance.h"

#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>

#include "adapters/qt/event_loop.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

TEST(OneInstance, ALaterOneAsksTheFirstToShowItselfAndEnds) {
    TempFolder folder;
    const auto data = folder.path() / "data";
    OneInstance first(data);
    ASSERT_TRUE(first.begin());
    int asked = 0;
    first.setAsked([&] { ++asked; });
    std::atomic<bool> began = true;
    std::atomic<bool> done = false;
    const std::unique_ptr<QThread> later(QThread::create([&] {
        OneInstance second(data);
        began = second.begin();
        done = true;
    }));
    later->start();
    EXPECT_TRUE(runUntil([&] { return done && asked == 1; }));
    later->wait();
    EXPECT_FALSE(began);
    OneInstance elsewhere(folder.path() / "other data");
    EXPECT_TRUE(elsewhere.begin());
}

TEST(OneInstance, OneStartedWhileTheFirstEndsReplacesIt) {
    TempFolder folder;
    auto first = std::make_unique<OneInstance>(folder.path());
    ASSERT_TRUE(first->begin());
    first->stopAnswering();
    OneInstance impatient(folder.path());
    EXPECT_FALSE(impatient.begin(0));
    bool began = false;
    const std::unique_ptr<QThread> later(
        QThread::create([&] { began = OneInstance(folder.path()).begin(); }));
    later->start();
    first.reset();
    later->wait();
    EXPECT_TRUE(began);
    OneInstance unlockable("/proc/no folder");
    EXPECT_TRUE(unlockable.begin());
}

}  // namespace
}  // namespace tembrix
