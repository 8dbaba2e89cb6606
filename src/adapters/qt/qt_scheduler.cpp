#include "adapters/qt/qt_scheduler.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <deque>
#include <future>
#include <limits>
#include <mutex>
#include <utility>

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace tembrix {

namespace {
constexpr double patience = 2.0;  // seconds for which the destructor waits for running work

// Qt's pools and event loop hand a task from one thread to another under a lock that the thread
// sanitizer does not see, because Qt is not built for it. These two name the lock to it.
#ifdef __SANITIZE_THREAD__
char handoverLock;
void beforeHandover() {
    __tsan_release(&handoverLock);
}
void afterHandover() {
    __tsan_acquire(&handoverLock);
}
#else
void beforeHandover() {}
void afterHandover() {}
#endif

// For a task that is about to be given to Qt.
Scheduler::Task handedOver(Scheduler::Task task) {
    Scheduler::Task whole = [task = std::move(task)] {
        afterHandover();
        task();
        beforeHandover();
    };
    beforeHandover();
    return whole;
}
}  // namespace

struct QtScheduler::Pools {
    QThreadPool userInitiated;
    QThreadPool utility;
    QThreadPool serial;
    std::atomic<bool> closed{false};

    Pools() {
        const int cores = std::max(1, QThread::idealThreadCount());
        // A task may wait for the main thread or for a process, so one thread is not enough.
        userInitiated.setMaxThreadCount(std::max(4, cores));
        utility.setMaxThreadCount(std::max(2, cores / 2));
        utility.setThreadPriority(QThread::LowPriority);
        // Tasks of serial queues such as file writes must not wait for long jobs.
        serial.setMaxThreadCount(64);
    }
    bool waitForDone(int milliseconds) {
        const bool done = userInitiated.waitForDone(milliseconds) && utility.waitForDone(0) &&
                          serial.waitForDone(0);
        afterHandover();
        return done;
    }
    void close() {
        closed = true;
        userInitiated.clear();
        utility.clear();
        serial.clear();
    }
};

// Uses a thread of the pool only while it has tasks.
class QtScheduler::Queue final : public SerialQueue {
  public:
    explicit Queue(std::weak_ptr<Pools> pools)
        : pools_(std::move(pools)), state_(std::make_shared<State>()) {}

    void async(std::function<void()> task) override {
        const auto pools = pools_.lock();
        if (!pools || pools->closed)
            return;
        const std::lock_guard lock(state_->mutex);
        state_->tasks.push_back(std::move(task));
        if (!std::exchange(state_->running, true))
            pools->serial.start(
                handedOver([state = state_, pools = pools_] { work(*state, pools); }));
    }

  private:
    struct State {
        std::mutex mutex;
        std::deque<std::function<void()>> tasks;
        bool running = false;
    };

    static void work(State& state, const std::weak_ptr<Pools>& weakPools) {
        for (;;) {
            std::function<void()> task;
            {
                const auto pools = weakPools.lock();
                const std::lock_guard lock(state.mutex);
                if (state.tasks.empty() || !pools || pools->closed) {
                    state.running = false;
                    return;
                }
                task = std::move(state.tasks.front());
                state.tasks.pop_front();
            }
            task();
        }
    }

    std::weak_ptr<Pools> pools_;
    std::shared_ptr<State> state_;
};

namespace {

class EventLoopTimer final : public Timer {
  public:
    EventLoopTimer(double seconds, Scheduler::Task task, bool repeating)
        : task_(std::make_shared<Scheduler::Task>(std::move(task))), timer_(new QTimer) {
        constexpr double longest = std::numeric_limits<int>::max();
        const double milliseconds = std::ceil(seconds * 1000 - 1e-6);
        timer_->setTimerType(Qt::PreciseTimer);
        timer_->setSingleShot(!repeating);
        timer_->setInterval(
            static_cast<int>(std::clamp(milliseconds, repeating ? 1.0 : 0.0, longest)));
        QObject::connect(timer_, &QTimer::timeout, timer_, [task = task_] {
            const auto running = task;  // the task may destroy its timer
            (*running)();
        });
        timer_->start();
    }
    ~EventLoopTimer() override {
        timer_->stop();
        timer_->disconnect();
        timer_->deleteLater();
    }

  private:
    std::shared_ptr<Scheduler::Task> task_;
    QTimer* timer_;
};

}  // namespace

QtScheduler::QtScheduler() : pools_(std::make_shared<Pools>()) {}

QtScheduler::~QtScheduler() {
    pools_->close();
    // Tasks for the main thread are discarded from now on, which ends all waiting for them.
    const double end = monotonic() + (drained_ ? 0 : patience);
    bool done = false;
    do {
        QCoreApplication::removePostedEvents(&main_);
        done = pools_->waitForDone(5);
    } while (!done && monotonic() < end);
    // The destructor of a pool waits for its threads. If one hangs, the pools are leaked so that
    // the program can end.
    if (!done)
        new std::shared_ptr<Pools>(pools_);
}

Date QtScheduler::now() const {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(time).count()};
}

double QtScheduler::monotonic() const {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(time).count();
}

bool QtScheduler::isMain() const {
    return QThread::currentThread() == main_.thread();
}

void QtScheduler::onMain(Task task) {
    ++handedOver_;
    QMetaObject::invokeMethod(&main_, handedOver(std::move(task)), Qt::QueuedConnection);
}

void QtScheduler::onMainAndWait(Task task) {
    if (isMain())
        return task();
    // If the task is discarded with the main thread's queue, the wait ends as well.
    auto work = std::make_shared<std::packaged_task<void()>>(std::move(task));
    const auto done = work->get_future();
    onMain([work = std::move(work)] { (*work)(); });
    done.wait();
}

std::unique_ptr<Timer> QtScheduler::after(double seconds, Task task) {
    return std::make_unique<EventLoopTimer>(seconds, std::move(task), false);
}

std::unique_ptr<Timer> QtScheduler::every(double seconds, Task task) {
    return std::make_unique<EventLoopTimer>(seconds, std::move(task), true);
}

void QtScheduler::background(Priority priority, Task task) {
    if (pools_->closed)
        return;
    auto& pool = priority == Priority::utility ? pools_->utility : pools_->userInitiated;
    pool.start(handedOver(std::move(task)));
}

std::shared_ptr<SerialQueue> QtScheduler::serialQueue(const std::string&) {
    return std::make_shared<Queue>(pools_);
}

bool QtScheduler::drain(double seconds) {
    const double end = monotonic() + seconds;
    // Idle only if the last background tasks posted nothing to the main thread and the main thread
    // started nothing new.
    const auto idle = [this] {
        const auto before = handedOver_.load();
        const bool done = pools_->waitForDone(0);
        QCoreApplication::sendPostedEvents(&main_, QEvent::MetaCall);
        return done && pools_->waitForDone(0) && handedOver_ == before;
    };
    while (!idle() && monotonic() < end)
        pools_->waitForDone(5);
    pools_->close();
    drained_ = true;
    return idle();
}

}  // namespace tembrix
