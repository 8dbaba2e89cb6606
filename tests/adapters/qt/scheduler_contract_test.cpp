#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <vector>

#include "adapters/qt/event_loop.h"
#include "adapters/qt/qt_scheduler.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

struct VirtualKit {
    VirtualScheduler scheduler;
    template <class Condition>
    bool settle(Condition condition) {
        for (int i = 0; i < 5000 && !condition(); ++i)
            scheduler.advance(0.001);
        return condition();
    }
};

struct QtKit {
    QtScheduler scheduler;
    template <class Condition>
    bool settle(Condition condition) {
        return runUntil(condition);
    }
};

template <class Kit>
class SchedulerContract : public testing::Test {
  protected:
    Kit kit;
    Scheduler& scheduler = kit.scheduler;
};
using Kits = testing::Types<VirtualKit, QtKit>;
TYPED_TEST_SUITE(SchedulerContract, Kits);

TYPED_TEST(SchedulerContract, MainTasksRunLaterInOrderOnTheMainThread) {
    std::vector<int> order;
    bool allOnMain = true;
    for (int i = 0; i < 3; ++i)
        this->scheduler.onMain([&, i] {
            order.push_back(i);
            allOnMain = allOnMain && this->scheduler.isMain();
            if (i == 0)
                this->scheduler.onMain([&] { order.push_back(9); });
        });
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(this->kit.settle([&] { return order.size() == 4; }));
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 9));
    EXPECT_TRUE(allOnMain);
}

TYPED_TEST(SchedulerContract, BackgroundWorkIsOffTheMainThreadAndComesBack) {
    std::atomic<int> offMain = 0;
    int back = 0;
    for (const auto priority : {Priority::utility, Priority::userInitiated})
        this->scheduler.background(priority, [&] {
            offMain += !this->scheduler.isMain();
            this->scheduler.onMain([&] { ++back; });
        });
    ASSERT_TRUE(this->kit.settle([&] { return back == 2; }));
    EXPECT_EQ(offMain, 2);
}

TYPED_TEST(SchedulerContract, WaitingForMainRunsWhatWasHandedOverBefore) {
    std::vector<int> order;
    bool done = false;
    this->scheduler.background(Priority::userInitiated, [&] {
        this->scheduler.onMain([&] { order.push_back(1); });
        bool onMain = false;
        this->scheduler.onMainAndWait([&] {
            order.push_back(2);
            onMain = this->scheduler.isMain();
        });
        const bool waited = onMain && !this->scheduler.isMain();
        this->scheduler.onMain([&, waited] { done = waited; });
    });
    ASSERT_TRUE(this->kit.settle([&] { return done; }));
    EXPECT_THAT(order, ElementsAre(1, 2));
    this->scheduler.onMainAndWait([&] { order.push_back(3); });
    EXPECT_EQ(order.size(), 3U);
}

TYPED_TEST(SchedulerContract, SerialQueueKeepsOrderEvenAfterItIsLetGo) {
    std::vector<int> first;
    std::atomic<int> done = 0;
    {
        const auto a = this->scheduler.serialQueue("a");
        const auto b = this->scheduler.serialQueue("b");
        for (int i = 0; i < 200; ++i) {
            a->async([&, i] {
                first.push_back(i);
                ++done;
            });
            b->async([&] { ++done; });
        }
    }
    ASSERT_TRUE(this->kit.settle([&] { return done == 400; }));
    EXPECT_EQ(first.size(), 200U);
    EXPECT_TRUE(std::is_sorted(first.begin(), first.end()));
}

TYPED_TEST(SchedulerContract, TimersFireByTimeAndNotEarly) {
    std::vector<int> order;
    const double begin = this->scheduler.monotonic();
    const double wall = this->scheduler.now().secondsSince1970;
    double elapsed = 0;
    const auto late = this->scheduler.after(0.06, [&] {
        order.push_back(2);
        elapsed = this->scheduler.monotonic() - begin;
    });
    const auto soon = this->scheduler.after(0.02, [&] { order.push_back(1); });
    const auto now = this->scheduler.after(0, [&] { order.push_back(0); });
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(this->kit.settle([&] { return order.size() == 3; }));
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
    EXPECT_GE(elapsed, 0.06);
    EXPECT_GE(this->scheduler.now().secondsSince1970 - wall, 0.05);
}

TYPED_TEST(SchedulerContract, DestroyedTimersStaySilent) {
    int fired = 0, ticks = 0;
    bool end = false;
    this->scheduler.after(0, [&] { ++fired; }).reset();
    // A timer may destroy itself and another one that is due at the same time.
    std::unique_ptr<Timer> self, other;
    auto owned = std::make_shared<int>(1);
    self = this->scheduler.after(0.005, [&, owned] {
        self.reset();
        other.reset();
        fired += 10 * *owned;
    });
    other = this->scheduler.after(0.005, [&] { ++fired; });
    std::unique_ptr<Timer> repeating = this->scheduler.every(0.002, [&] {
        if (++ticks == 3)
            repeating.reset();
    });
    const auto last = this->scheduler.after(0.05, [&] { end = true; });
    ASSERT_TRUE(this->kit.settle([&] { return end; }));
    EXPECT_EQ(fired, 10);
    EXPECT_EQ(ticks, 3);
}

// Work that waits until the test releases it.
class Gate {
  public:
    void wait() {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(10), [&] { return open_; });
    }
    void open() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

TEST(QtScheduler, DrainLetsWritesEndEvenThoseThatNeedTheMainThread) {
    QtScheduler scheduler;
    std::atomic<int> written = 0;
    bool told = false;
    const auto queue = scheduler.serialQueue("writes");
    for (int i = 0; i < 20; ++i)
        queue->async([&] { ++written; });
    queue->async([&] {
        scheduler.onMainAndWait([&] { told = true; });
        ++written;
        scheduler.onMain([&] { queue->async([&] { ++written; }); });
    });
    EXPECT_TRUE(scheduler.drain(5));
    EXPECT_EQ(written, 22);
    EXPECT_TRUE(told);
    queue->async([&] { ++written; });
    scheduler.background(Priority::utility, [&] { ++written; });
    EXPECT_TRUE(scheduler.drain(0));
    EXPECT_EQ(written, 22);
}

TEST(QtScheduler, AHangingTaskBlocksNothing) {
    static Gate gate, ended;  // the thread outlives the scheduler
    static std::atomic<bool> began = false, second = false;
    int calls = 0;
    {
        QtScheduler scheduler;
        const auto queue = scheduler.serialQueue("slow");
        queue->async([] {
            began = true;
            gate.wait();
            ended.open();
        });
        queue->async([] { second = true; });
        ASSERT_TRUE(runUntil([] { return began.load(); }));
        const double begin = scheduler.monotonic();
        EXPECT_FALSE(scheduler.drain(0.05));
        EXPECT_LT(scheduler.monotonic() - begin, 2);
        scheduler.onMain([&] { ++calls; });
    }
    gate.open();
    ended.wait();
    runUntil([] { return false; }, 20);
    EXPECT_EQ(calls, 0);  // the queue was destroyed with the scheduler
    EXPECT_FALSE(second);
}

TEST(QtScheduler, LongUtilityWorkDelaysNeitherTheUserNorWrites) {
    QtScheduler scheduler;
    Gate gate;
    for (int i = 0; i < 50; ++i)
        scheduler.background(Priority::utility, [&] { gate.wait(); });
    std::atomic<int> done = 0;
    scheduler.background(Priority::userInitiated, [&] { ++done; });
    scheduler.serialQueue("writes")->async([&] { ++done; });
    EXPECT_TRUE(runUntil([&] { return done == 2; }));
    gate.open();
    EXPECT_TRUE(scheduler.drain(5));
}

}  // namespace
}  // namespace tembrix
