#pragma once

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <functional>
#include <string>
#include <unordered_set>

namespace tembrix {

// The toolkit's application, run turn by turn by a benchmark: notes how long the event loop was
// taken without a break, by what, and which widgets were painted.
class WatchedApplication final : public QApplication {
  public:
    WatchedApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    // Does what is to be measured as a hand would set it off, then runs turns until the condition
    // holds; milliseconds from the beginning to the end of the turn that brought it about. Negative
    // if it does not hold in time.
    double runUntil(const std::function<bool()>& condition, const std::function<void()>& start = {},
                    double seconds = 20);
    void run(double seconds);

    // Of the widgets painted since the last call of forgetPaintings(), once their pixels have gone
    // to the window.
    bool isPainted(const QWidget* widget) const { return painted_.contains(widget); }
    void forgetPaintings() { painted_.clear(); }

    // The longest turn of the loop since the last reset, in wall and processor time of the main
    // thread, and the longest event in it.
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
