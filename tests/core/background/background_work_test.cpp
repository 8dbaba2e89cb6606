#include "core/background/background_work.h"

#include <algorithm>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

// Records on which thread a value is destroyed.
struct Traced {
    Traced(VirtualScheduler& scheduler, std::string name, std::vector<std::string>& log)
        : end(&log, [&scheduler, name](std::vector<std::string>* to) {
              to->push_back(name + (scheduler.isMain() ? " on main" : " in background"));
          }) {}
    std::shared_ptr<std::vector<std::string>> end;
};

struct BackgroundWorkTest : testing::Test {
    VirtualScheduler scheduler;
    std::optional<BackgroundWork> work{std::in_place, scheduler};
    std::vector<std::string> log;

    // Work that records its run and returns its number.
    auto numbered(int number) {
        return [this, number] {
            log.push_back("work " + std::to_string(number));
            return number;
        };
    }
    auto record() {
        return [this](int result) { log.push_back("done " + std::to_string(result)); };
    }
};

using Log = std::vector<std::string>;

TEST_F(BackgroundWorkTest, ResultsReachTheMainThreadInOrderFromPoolsAndQueues) {
    const auto queue = scheduler.serialQueue("queue");
    bool workOnMain = true;
    bool doneOnMain = false;
    work->run(Priority::utility, numbered(1), record());
    work->run(*queue, numbered(2), record());
    work->run(
        Priority::userInitiated, [&] { workOnMain = scheduler.isMain(); },
        [&] { doneOnMain = scheduler.isMain(); });
    EXPECT_EQ(log, Log());
    scheduler.run();
    EXPECT_EQ(log, (Log{"work 1", "work 2", "done 1", "done 2"}));
    EXPECT_FALSE(workOnMain);
    EXPECT_TRUE(doneOnMain);
}

TEST_F(BackgroundWorkTest, CanceledWorkIsNotBegunAndResultsOnTheirWayAreDropped) {
    work->run(Priority::utility, numbered(1), record());
    scheduler.step();  // the work has ended, and its result has not been delivered yet
    work->run(Priority::utility, numbered(2), record());
    work->onMain([&] { log.push_back("step"); });
    auto guarded =
        work->guard([&](int value) { log.push_back("guarded " + std::to_string(value)); });
    guarded(7);
    work->cancel();
    guarded(8);
    work->run(Priority::utility, numbered(3), record());
    scheduler.run();
    EXPECT_EQ(log, (Log{"work 1", "guarded 7", "work 3", "done 3"}));

    log.clear();
    work->run(Priority::utility, numbered(4), record());
    work->onMain([&] { log.push_back("step"); });
    auto late = work->guard([&] { log.push_back("late"); });
    work.reset();
    late();
    scheduler.run();
    EXPECT_EQ(log, Log());
}

TEST_F(BackgroundWorkTest, RunningWorkIsAskedToStop) {
    bool stopped = false;
    work->run(
        Priority::utility,
        [&](const std::stop_token& stop) {
            work->cancel();
            stopped = stop.stop_requested();
        },
        [&] { log.push_back("done"); });
    scheduler.run();
    EXPECT_TRUE(stopped);
    EXPECT_EQ(log, Log());
}

TEST_F(BackgroundWorkTest, ValuesAreDestroyedOnTheirThreadCanceledOrNot) {
    for (const bool canceled : {false, true}) {
        log.clear();
        work->run(
            Priority::utility,
            [this, input = Traced(scheduler, "input", log)] {
                return Traced(scheduler, "result", log);
            },
            [this, captured = Traced(scheduler, "captured", log)](const Traced&) {
                log.push_back("done");
            });
        scheduler.step();
        EXPECT_EQ(log, Log{"input in background"});
        if (canceled)
            work->cancel();
        scheduler.run();
        EXPECT_EQ(log.size(), canceled ? 3u : 4u);
        EXPECT_EQ(std::count(log.begin(), log.end(), "result on main"), 1);
        EXPECT_EQ(std::count(log.begin(), log.end(), "captured on main"), 1);
    }
    log.clear();
    work->release(Traced(scheduler, "large", log));
    EXPECT_EQ(log, Log());
    scheduler.run();
    EXPECT_EQ(log, Log{"large in background"});
}

// A scheduler whose background tasks run on real threads.
struct ThreadedScheduler final : Scheduler {
    Date now() const override { return {}; }
    double monotonic() const override { return 0; }
    bool isMain() const override { return false; }
    void onMain(Task) override {}
    void onMainAndWait(Task) override {}
    std::unique_ptr<Timer> after(double, Task) override { return {}; }
    std::unique_ptr<Timer> every(double, Task) override { return {}; }
    void background(Priority, Task task) override { threads.emplace_back(std::move(task)); }
    std::shared_ptr<SerialQueue> serialQueue(const std::string&) override { return {}; }
    std::vector<std::jthread> threads;
};

TEST(BackgroundWorkOnThreads, CancelAndWaitReturnsWhenNothingRuns) {
    ThreadedScheduler threaded;
    BackgroundWork work(threaded);
    int owned = 0;  // written by the work; ThreadSanitizer reports a missing wait
    std::promise<void> begun;
    work.run(
        Priority::utility,
        [&](const std::stop_token& stop) {
            begun.set_value();
            while (!stop.stop_requested())
                std::this_thread::yield();
            for (int i = 0; i < 1000; ++i)
                std::this_thread::yield();
            owned = 1;
        },
        [] {});
    begun.get_future().wait();
    work.cancelAndWait();
    EXPECT_EQ(owned, 1);
}

}  // namespace
}  // namespace tembrix
