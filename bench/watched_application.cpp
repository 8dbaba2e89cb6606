#include "watched_application.h"

#include <QMetaEnum>
#include <chrono>
#include <ctime>
#include <thread>

#include "bench_user.h"

namespace tembrix {
namespace {

double processorMs() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

}  // namespace

WatchedApplication::WatchedApplication(int& argc, char** argv) : QApplication(argc, argv) {}

bool WatchedApplication::notify(QObject* receiver, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type == QEvent::Paint)
        painted_.insert(receiver);
    if (depth_ > 0)
        return QApplication::notify(receiver, event);
    const char* kind = receiver->metaObject()->className();
    const double start = nowMs();
    ++depth_;
    const bool taken = QApplication::notify(receiver, event);
    --depth_;
    if (const double time = nowMs() - start; time > turnsLongestEvent_) {
        turnsLongestEvent_ = time;
        const char* name = QMetaEnum::fromType<QEvent::Type>().valueToKey(type);
        turnsEvent_ = std::string(kind) + " " + (name ? name : std::to_string(type).c_str());
    }
    return taken;
}

void WatchedApplication::turn(const std::function<void()>& work) {
    turnsLongestEvent_ = 0;
    const double start = nowMs();
    const double processorStart = processorMs();
    work();
    const double time = nowMs() - start;
    if (time > longest_.wall)
        longest_ = {time, processorMs() - processorStart, turnsEvent_};
    // Nothing was pending: lets other processes run, like a sleeping event loop.
    if (time < 0.05)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
}

double WatchedApplication::runUntil(const std::function<bool()>& condition,
                                    const std::function<void()>& start, double seconds) {
    const double begin = nowMs();
    if (start)
        turn(start);
    while (!condition()) {
        if (nowMs() > begin + seconds * 1000)
            return -1;
        turn([] { processEvents(QEventLoop::AllEvents); });
    }
    return nowMs() - begin;
}

void WatchedApplication::run(double seconds) {
    const double end = nowMs() + seconds * 1000;
    runUntil([&] { return nowMs() >= end; }, {}, seconds + 1);
}

}  // namespace tembrix
