// A day's work with the real windows, store and player: 200 videos in the library, 30 collections
// of the user, and a match of an hour at 1080p with 10,000 stamps on 50 lines. Keys are sent like
// the window system does. A press is complete when its stamp is stored and both windows are
// painted. Lost stamps make the program fail.
//
// bench_workday [presses of the simulated hour]

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QListView>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "app/control/line_names_view.h"
#include "app/control/timeline_canvas.h"
#include "app/marking/tag_button.h"
#include "app/widgets/qt_text.h"
#include "bench_user.h"
#include "core/composition/core_services.h"
#include "core/shell/project.h"
#include "main/application.h"
#include "watched_application.h"
#include "workday_data.h"

namespace tembrix {
namespace {

constexpr int presses = 300;
constexpr int firstRow = 1;  // above it is the drawings line
constexpr int rowsInUse = 6;

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Times of repeated runs in milliseconds.
class Times {
  public:
    void add(double time) { times_.push_back(time); }
    double median() const { return at(0.5); }
    double percentile95() const { return at(0.95); }
    double worst() const { return at(1); }

  private:
    double at(double part) const {
        std::vector<double> sorted = times_;
        std::sort(sorted.begin(), sorted.end());
        return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))];
    }
    std::vector<double> times_;
};

void print(const char* what, const Times& times) {
    std::printf("%-56s | %7.1f %7.1f %7.1f\n", what, times.median(), times.percentile95(),
                times.worst());
    std::fflush(stdout);
}

void print(const char* what, double value) {
    std::printf("%-56s | %7.1f\n", what, value);
    std::fflush(stdout);
}

void print(const WatchedApplication::Block& block) {
    std::printf("  the longest of all: %.1f ms, %.1f ms of them its own, in %s\n", block.wall,
                block.processor, block.event.c_str());
}

class Workday {
  public:
    Workday(WatchedApplication& loop, Application& program)
        : loop_(loop), core_(program.core()), list_(program.listWindow()) {}

    void search();
    void open();
    void mark();
    void switchCollections();
    void hour(int marks);
    int expected() const { return expected_; }

  private:
    // Fails if the condition does not become true.
    double until(const char* what, const std::function<bool()>& condition,
                 const std::function<void()>& start = {}) {
        const double time = loop_.runUntil(condition, start);
        if (time < 0)
            throw Failure(std::string("waited in vain for ") + what);
        return time;
    }
    template <class Widget>
    static Widget* inWindow(const char* window, const char* name = nullptr) {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top->objectName() == QLatin1String(window) && top->isVisible())
                if (auto* found =
                        top->findChild<Widget*>(name ? QString::fromLatin1(name) : QString()))
                    return found;
        return nullptr;
    }
    void activate(QWidget& window) {
        window.activateWindow();
        until("a window to have the keyboard",
              [&] { return QGuiApplication::focusWindow() == window.windowHandle(); });
    }
    // Sends a key like the window system; its effects happen in the event loop.
    static void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QWidget* popup = QApplication::activePopupWidget();
        QWindow* window = popup ? popup->windowHandle() : QGuiApplication::focusWindow();
        const bool types = key >= Qt::Key_Space && key <= Qt::Key_ydiaeresis && !modifiers;
        const QString text = types ? QString(QChar(key)).toLower() : QString();
        qt_handleKeyEvent(window, QEvent::KeyPress, key, modifiers, text);
        qt_handleKeyEvent(window, QEvent::KeyRelease, key, modifiers, text);
    }
    Project& project() { return *core_.windows.project(); }
    // Counts the stamps of the open project now and after each change.
    void follow() {
        const auto count = [this](const TimelineLines& lines) {
            count_ = 0;
            for (const auto& line : lines)
                count_ += static_cast<int>(line->stamps.size());
        };
        count(*project().timeline.lines);
        lines_ = project().timeline.lines.observe([this, count](const TimelineLines& lines) {
            count(lines);
            loop_.forgetPaintings();
        });
    }
    static Qt::Key tagKey(int press) {
        const std::string_view keys = WorkdayData::keys;
        return static_cast<Qt::Key>(keys[static_cast<std::size_t>(press) % keys.size()]);
    }
    void selectRow(int row) {
        const QModelIndex index = names_->model()->index(row, 0);
        QTest::mouseClick(names_->viewport(), Qt::LeftButton, {},
                          names_->visualRect(index).center());
    }
    void findButtons();
    double press(int number, bool inView);
    void passTime(double seconds);
    void addLine(const QString& name);
    void deleteOne(int row);

    WatchedApplication& loop_;
    CoreServices& core_;
    QWidget& list_;
    TimelineCanvas* canvas_ = nullptr;
    LineNamesView* names_ = nullptr;
    std::map<Qt::Key, TagButton*> buttons_;  // by hot key
    int count_ = 0;                          // number of stamps in the open project
    int expected_ = 0;                       // expected number of stamps
    std::mt19937 random_{1};
    Subscription lines_;
};

void Workday::search() {
    auto* cards = inWindow<QListView>("list", "videosList");
    auto* field = inWindow<QLineEdit>("list", "searchVideos");
    activate(list_);
    until("all videos", [&] { return cards->model()->rowCount() == WorkdayData::videos; });
    loop_.run(5);  // until the launch work has ended
    field->setFocus();
    Times times;
    loop_.resetLongest();
    for (const char* text : {"guests 7", "round 12", "home 3", "red li"}) {
        for (QString typed; const char letter : std::string_view(text)) {
            typed += QLatin1Char(letter);
            loop_.run(0.1);
            loop_.forgetPaintings();
            times.add(until(
                "what was found", [&] { return loop_.isPainted(cards->viewport()); },
                [&] { key(static_cast<Qt::Key>(QChar(letter).toUpper().unicode())); }));
            const auto* found = cards->model();
            for (int row = 0; row < found->rowCount(); ++row)
                if (!found->index(row, 0).data().toString().contains(typed, Qt::CaseInsensitive))
                    throw Failure("the search found something else");
            if (found->rowCount() == 0)
                throw Failure("the search found nothing");
        }
        if (std::string_view(text) != "red li")
            field->clear();
    }
    print("Search with 200 videos, letter to shown", times);
    print("Search: longest block", loop_.longest().wall);
    if (cards->model()->rowCount() != 1)
        throw Failure("the match is not the only one found");
    cards->setFocus();
}

void Workday::open() {
    loop_.run(0.3);
    loop_.resetLongest();
    const double windows = until(
        "the project's windows",
        [&] {
            canvas_ = inWindow<TimelineCanvas>("timelines");
            names_ = inWindow<LineNamesView>("timelines");
            const auto* button = inWindow<TagButton>("tagLibrary");
            return canvas_ && button && canvas_->model().rows().size() == WorkdayData::lines + 1 &&
                   loop_.isPainted(canvas_) && loop_.isPainted(names_->viewport()) &&
                   loop_.isPainted(button);
        },
        [] { key(Qt::Key_Return); });
    follow();
    print("Project with 10,000 stamps, opened to shown", windows);
    print("Opening: longest block", loop_.longest().wall);
    if (count_ != WorkdayData::stamps)
        throw Failure("the project does not have its stamps");
    expected_ = count_;
    until("the video to play", [&] { return project().player.currentTime() > 3; });
    print("Memory with the 1080p project open, MB", residentMegabytes());
}

void Workday::findButtons() {
    buttons_.clear();
    for (QWidget* top : QApplication::topLevelWidgets())
        if (top->objectName() == QLatin1String("tagLibrary"))
            for (auto* button : top->findChildren<TagButton*>())
                if (button->isVisible() && button->tag().hotkey)
                    buttons_[static_cast<Qt::Key>(button->tag().hotkey->front())] = button;
    for (const char* name = WorkdayData::keys; *name; ++name)
        if (!buttons_.contains(static_cast<Qt::Key>(*name)))
            throw Failure("a tag of the workday has no button");
}

// Measures from the key press until the stamp is stored and shown on the button, and on its line if
// that is in view.
double Workday::press(int number, bool inView) {
    const Qt::Key which = tagKey(number);
    const QWidget* button = buttons_[which];
    const int before = count_;
    const double time = until(
        "a press to be shown",
        [&] {
            return count_ != before && loop_.isPainted(button) &&
                   (!inView || loop_.isPainted(canvas_));
        },
        [&] { key(which); });
    if (count_ != ++expected_)
        throw Failure("a press made not one stamp");
    return time;
}

void Workday::mark() {
    activate(*inWindow<QWidget>("tagLibrary", "tagLibrary")->window());
    findButtons();
    Times times;
    Times blocks;
    Times own;
    std::uniform_real_distribution<double> pause(0.02, 0.2);
    WatchedApplication::Block worst;
    for (int i = 0; i < presses; ++i) {
        if (i % (presses / rowsInUse) == 0)
            selectRow(firstRow + i / (presses / rowsInUse));
        until("the video to play",
              [&] { return *project().player.status == PlayerStatus::playing; });
        loop_.run(pause(random_));
        loop_.resetLongest();
        times.add(press(i, true));
        loop_.run(0.15);  // playback continues
        blocks.add(loop_.longest().wall);
        own.add(loop_.longest().processor);
        if (loop_.longest().wall > worst.wall)
            worst = loop_.longest();
    }
    print("Press to stored and shown, the video playing", times);
    print("Marking: longest block of each press", blocks);
    print("Marking: the loop's own work in it", own);
    print(worst);
}

void Workday::switchCollections() {
    auto* names = inWindow<QComboBox>("tagLibrary", "tagLibraryCollections");
    activate(*names->window());
    Times times;
    Times blocks;
    const auto active = core_.tagLibrary.active.observe(
        [this](const CollectionLists&) { loop_.forgetPaintings(); });
    const auto chosen = [this] {
        const auto& type = *core_.tagLibrary.currentCollectionType;
        return type.isUser() ? type.name
                             : core_.tagLibrary.selectedStandardCollectionName->value_or("");
    };
    // Down to the last collection and up to a standard one, which loads all collections again. The
    // rest of the day uses one of the user's.
    constexpr int lastStandard = 1;
    bool down = true;
    for (int i = 0; i < 2 * WorkdayData::collections || names->currentIndex() <= lastStandard;
         ++i) {
        if (names->currentIndex() == names->count() - 1)
            down = false;
        else if (names->currentIndex() <= lastStandard)
            down = true;
        names->setFocus();
        key(Qt::Key_Down);
        until("the list of collections", [] { return QApplication::activePopupWidget(); });
        key(down ? Qt::Key_Down : Qt::Key_Up);
        loop_.run(0.2);
        const std::string before = chosen();
        loop_.resetLongest();
        times.add(until(
            "another collection",
            [&] {
                const auto* button = inWindow<TagButton>("tagLibrary");
                return chosen() != before && button && loop_.isPainted(button);
            },
            [] { key(Qt::Key_Return); }));
        loop_.run(0.3);  // the background load of the switch ends
        blocks.add(loop_.longest().wall);
    }
    print("Switch of the collection to shown", times);
    print("Switch of the collection: longest block", blocks);
}

void Workday::addLine(const QString& name) {
    const std::size_t before = project().timeline.lines->size();
    auto* add = inWindow<QAbstractButton>("timelines", "fullControlButtonAddTimeline");
    QTest::mouseClick(add, Qt::LeftButton);
    until("the sheet", [] {
        return qobject_cast<QDialog*>(QApplication::activeWindow()) &&
               qobject_cast<QLineEdit*>(QApplication::focusWidget());
    });
    QTest::keyClicks(QApplication::focusWidget(), name);
    key(Qt::Key_Return);
    until("the line", [&] { return project().timeline.lines->size() == before + 1; });
    until("the sheet to close",
          [&] { return QGuiApplication::focusWindow() == canvas_->window()->windowHandle(); });
}

void Workday::deleteOne(int row) {
    const QPointF place = canvas_->stampArea(static_cast<std::size_t>(row), 20).center();
    QTest::mouseClick(canvas_, Qt::LeftButton, {}, place.toPoint());
    until("a stamp to be chosen", [&] { return project().timeline.selectedStampID->has_value(); });
    --expected_;
    until(
        "the deletion", [&] { return count_ == expected_; },
        [] { key(Qt::Key_Backspace, Qt::AltModifier); });
}

// Moves the video to the current time: three seconds on by key, unless a click has moved it.
void Workday::passTime(double seconds) {
    const double before = project().player.currentTime();
    if (before + 10 > WorkdayData::matchSeconds)
        return;
    until(
        "the video to go on", [&] { return std::abs(project().player.currentTime() - before) > 1; },
        [&] {
            if (std::abs(before - seconds) < 10)
                key(Qt::Key_Right, Qt::ShiftModifier);
            else
                project().player.seek(seconds);
        });
}

// Makes two marks for each second of the video, as fast as possible.
void Workday::hour(int marks) {
    activate(*canvas_->window());
    findButtons();
    project().player.seek(5);
    Times times;
    Times undo;
    loop_.resetLongest();
    const auto memory = [](const char* what) { print(what, residentMegabytes()); };
    memory("An hour of marking: memory before, MB");
    for (int i = 0; i < marks; ++i) {
        if (i % 400 == 0)
            addLine(QStringLiteral("Fresh %1").arg(i / 400 + 1));
        times.add(press(i, false));
        if (i % 6 == 5)
            passTime(i / 2.0);
        if (i % 100 == 99) {
            --expected_;
            undo.add(until(
                "the undo", [&] { return count_ == expected_; },
                [] { key(Qt::Key_Z, Qt::ControlModifier); }));
        }
        if (i % 150 == 149)
            deleteOne(firstRow + i / 150 % rowsInUse);
        if ((i + 1) % (marks / 4) == 0 && i + 1 != marks * 3 / 4) {
            const bool whole = i + 1 == marks;
            loop_.run(2);
            memory(whole               ? "An hour of marking: memory after all of it, MB"
                   : i + 1 < marks / 2 ? "An hour of marking: memory after a quarter, MB"
                                       : "An hour of marking: memory after half of it, MB");
        }
    }
    print("An hour of marking: press to shown", times);
    print("An hour of marking: undo", undo);
    print(loop_.longest());
}

// Fills the user's folders in a child process, so that its memory is not measured.
bool fillApart() {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(WorkdayData::write(TEMBRIX_BENCH_SCRATCH) ? 0 : 1);
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

int run(int argc, char** argv) {
    Application::prepare();
    WatchedApplication loop(argc, argv);
    loop.setQuitOnLastWindowClosed(false);
    int expected = 0;
    int found = 0;
    {
        Application program(TEMBRIX_RESOURCES);
        program.start();
        Workday day(loop, program);
        day.search();
        day.open();
        day.mark();
        day.switchCollections();
        day.hour(argc > 1 ? std::atoi(argv[1]) : 7200);
        expected = day.expected();
        found = WorkdayData::storedStamps();  // as after a kill, without quitting
    }
    const int durable = WorkdayData::durableStamps();
    std::printf("%-56s | %d\n", "An hour of marking: lost",
                std::max(std::abs(expected - found), std::abs(expected - durable)));
    return found == expected && durable == expected ? 0 : 1;
}

}  // namespace
}  // namespace tembrix

int main(int argc, char** argv) {
    using namespace tembrix;
    const TempFolder home;
    settleIn(home);
    if (!fillApart()) {
        std::fprintf(stderr, "the workday's data could not be made\n");
        return 1;
    }
    try {
        return run(argc, argv);
    } catch (const Failure& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
