#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace tembrix {

// Runs the event loop until the condition is true. Returns false after the time limit.
template <class Condition>
bool runUntil(Condition condition, int milliseconds = 5000) {
    QEventLoop loop;
    const QDeadlineTimer deadline(milliseconds);
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (condition() || deadline.hasExpired())
            loop.quit();
    });
    look.start(1);
    if (!condition())
        loop.exec();
    return condition();
}

}  // namespace tembrix
