#pragma once

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <functional>
#include <string>
#include <unordered_set>

namespace tembrix {

// A QApplication that a benchmark runs turn by turn. It records how long the event loop was blocked
// and by which event, and which widgets were painted.
class WatchedApplication final : public QApplication {
  public:
    WatchedApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    // Calls `start` and runs turns until the condition is true. Returns the milliseconds from the
    // start to the end of the last turn; negative if the condition is not true in time.
    double runUntil(const std::function<bool()>& condition, const std::function<void()>& start = {},
                    double seconds = 20);
    void run(double seconds);

    // Whether the widget was painted since the last call of forgetPaintings() and its pixels were
    // sent to the window.
    bool isPainted(const QWidget* widget) const { return painted_.contains(widget); }
    void forgetPaintings() { painted_.clear(); }

    // The longest turn of the event loop since the last reset, in wall and processor time of the
    // main thread, and its longest event.
    struct Block {
        double wall = 0;
        double processor = 0;
        std::string event;
    };
    const Block& longest() const { return longest_; }
    void resetLongest() { longest_ = {}; }

  private:
    void turn(const std::function<void()>& work);

    std::unordered_set<const QObject*> painted_;
    Block longest_;
    int depth_ = 0;
    double turnsLongestEvent_ = 0;
    std::string turnsEvent_;
};

}  // namespace tembrix
