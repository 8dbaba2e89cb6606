// The cost of a key press, from the keyboard to the stamp in the database, and of undo, with 10,000
// stamps on 50 lines unless stated otherwise and without windows; painting is measured separately.
// Also the part of a press that the store needs, and the bytes that it writes. There are twenty
// presses per second, many more than a user makes, so the database's own thread runs as usual. The
// last column is the processor time of this thread, which is more stable on a busy machine.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "core/timeline/timeline_transaction.h"
#include "fakes/captured_log.h"
#include "fakes/pressing_project.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

constexpr int presses = 300;

TimelineLines timelines(const std::vector<Tag>& tags, int lineCount, int stampsPerLine) {
    TimelineLines lines;
    for (int l = 0; l < lineCount; ++l) {
        const Tag& tag = tags[static_cast<std::size_t>(l) % tags.size()];
        TimelineLine line{Uuid::random(), tag.name, {}, {}};
        for (int s = 0; s < stampsPerLine; ++s) {
            TimelineStamp stamp;
            stamp.id = Uuid::random();
            stamp.idTag = stamp.primaryID.emplace(tag.id);
            stamp.timeStartSeconds = s * 53.031 + l / 7.0;
            stamp.timeFinishSeconds = stamp.timeStartSeconds + 8.0;
            stamp.colorHex = tag.color;
            stamp.label = tag.name;
            stamp.isActiveForMapView = false;
            stamp.labels = {freshId(), freshId()};
            line.stamps.push_back(std::move(stamp));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

// Wall and processor times of repeated runs, in milliseconds.
struct Times {
    std::vector<double> wall;
    std::vector<double> processor;

    void measure(const std::function<void()>& work) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const auto start = std::chrono::steady_clock::now();
        const double processorStart = processorNow();
        work();
        processor.push_back(processorNow() - processorStart);
        wall.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count());
    }
    void print(const std::string& what) {
        std::sort(wall.begin(), wall.end());
        std::sort(processor.begin(), processor.end());
        std::printf("%-44s %8.2f %8.2f %8.2f %8.2f\n", what.c_str(), at(wall, 0.5), at(wall, 0.95),
                    wall.back(), at(processor, 0.95));
        std::fflush(stdout);
    }

  private:
    static double processorNow() {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
    }
    static double at(const std::vector<double>& sorted, double part) {
        return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))];
    }
};

void fillLibrary(PressingProject& project, int videos, int lines = 50) {
    // The library of a season: the other videos have timelines as well.
    for (int i = 1; i < videos; ++i) {
        const std::string id = project.addVideo("other" + std::to_string(i) + ".mp4");
        project.storage.saveTimeline(timelines(project.tagLibrary.active->tags, 10, 40), id);
    }
    const std::string match = project.addVideo("match.mp4");
    project.storage.saveTimeline(timelines(project.tagLibrary.active->tags, lines, 10000 / lines),
                                 match);
    project.open(match);
}

// Alternates between a small and a large library, so that a busy machine affects both.
void strikes() {
    struct Match {
        Match(std::string name, int videos, int lines) : what(std::move(name)) {
            fillLibrary(project, videos, lines);
        }
        std::string what;
        TempFolder folder;
        PressingProject project{folder.path()};
        Times times;
    };
    Match small("press to stored, 20 videos", 20, 50);
    Match large("press to stored, 200 videos", 200, 50);
    Match oneLine("press to stored, one line", 200, 1);
    for (int i = 0; i < presses; ++i)
        for (Match* match : {&small, &large, &oneLine}) {
            match->project.players.player()->advanceTo(i * 30.0);
            match->times.measure([&] { match->project.strike(); });
            match->project.scheduler.advance(0.2);
        }
    for (Match* match : {&small, &large, &oneLine})
        match->times.print(match->what);
}

// The number of bytes that this process has written to disks so far.
double bytesWritten() {
    std::ifstream file("/proc/self/io");
    std::string name;
    double value = 0;
    while (file >> name >> value)
        if (name == "write_bytes:")
            return value;
    return 0;
}

// A stored match of so many stamps, and presses of which only the storing is measured.
class StoredMatch {
  public:
    StoredMatch(int lineCount, int stamps) {
        Tag tag;
        tag.id = freshId();
        tag.name = "Pass";
        lines_ = timelines({tag}, lineCount, stamps / lineCount);
        open();
        storage_->saveTimeline(lines_, "match");
        // Closing empties the log into the database, so that no later figure contains it.
        close();
        open();
        storage_->saveTimeline(lines_, "match");
    }
    void open() {
        defaults_ = std::make_unique<SqliteUserDefaults>(folder_.path() / "defaults.db", log_);
        storage_ = std::make_unique<InMemoryStorageManager>(*defaults_, scheduler_,
                                                            folder_.directories(), log_);
    }
    void close() {
        storage_.reset();
        defaults_.reset();
    }
    void press() {
        TimelineTransaction edit(lines_, {}, 0);
        const TimelineLine& line = *lines_[++presses_ * 7 % lines_.size()];
        TimelineStamp stamp = *line.stamps.back();
        stamp.id = Uuid::random();
        edit.make(InsertStamp{line.id, atEnd, std::move(stamp)});
        const auto edits = edit.editedLines(lines_);
        times.measure([&] { storage_->saveTimeline(edit.lines(), "match", edits); });
        lines_ = edit.lines();
        scheduler_.run();  // what the store leaves to the background
    }

    Times times;

  private:
    TempFolder folder_;
    CapturedLog log_;
    VirtualScheduler scheduler_;
    std::unique_ptr<SqliteUserDefaults> defaults_;
    std::unique_ptr<InMemoryStorageManager> storage_;
    TimelineLines lines_;
    std::size_t presses_ = 0;
};

// The bytes include the log, its return into the database and all syncs; not the documents, which
// are written every 30 seconds.
void bytesOfPresses(int lineCount, const std::string& where) {
    StoredMatch match(lineCount, 10000);
    const double before = bytesWritten();
    for (int i = 0; i < presses; ++i)
        match.press();
    match.close();
    std::printf("%-44s %8.2f\n", ("kB written by a press, " + where).c_str(),
                (bytesWritten() - before) / 1000 / presses);
}

void storing(int lineCount, const std::string& where) {
    StoredMatch small(lineCount, 10000);
    StoredMatch large(lineCount, 100000);
    for (int i = 0; i < presses; ++i)
        for (StoredMatch* match : {&small, &large})
            match->press();
    small.times.print("storing at 10,000 stamps, " + where);
    large.times.print("storing at 100,000 stamps, " + where);
}

void undoSteps() {
    TempFolder folder;
    PressingProject project(folder.path());
    fillLibrary(project, 200);
    TimelineDataManager& timeline = project.timeline;
    const auto line = [&](std::size_t i) { return timeline.lines.get()[1 + i % 40]->id; };
    const auto stamp = [&](const Uuid& id, std::size_t i) {
        const auto& stamps = timeline.findLine(id)->stamps;
        return stamps[i % stamps.size()]->id;
    };
    struct Kind {
        const char* name;
        std::function<void(std::size_t)> make;
    };
    const Kind kinds[] = {
        {"mark", [&](std::size_t) { project.strike(); }},
        {"resize",
         [&](std::size_t i) {
             timeline.updateStampTimes(line(i), stamp(line(i), i * 7), double(i % 1000), {});
         }},
        {"move",
         [&](std::size_t i) {
             timeline.moveStamp({line(i), stamp(line(i), i)}, line(i + 1));
         }},
        {"delete a stamp",
         [&](std::size_t i) { timeline.removeStamp(line(i), stamp(line(i), i * 3)); }},
        {"labels",
         [&](std::size_t i) { timeline.setStampLabels(line(i), stamp(line(i), i), {freshId()}); }},
        {"delete a line of 200", [&](std::size_t i) { timeline.deleteLine(line(i)); }},
        {"reorder", [&](std::size_t i) { timeline.moveLine(line(i + 5), line(i)); }},
    };
    for (const Kind& kind : kinds) {
        const std::size_t steps = std::string(kind.name).starts_with("delete a line") ? 8 : 50;
        Times times;
        for (std::size_t i = 0; i < steps; ++i)
            kind.make(i);
        for (std::size_t i = 0; i < steps; ++i)
            times.measure([&] { project.history.undo(); });
        for (std::size_t i = 0; i < steps; ++i)
            times.measure([&] { project.history.redo(); });
        for (std::size_t i = 0; i < steps; ++i)
            project.history.undo();
        times.print(std::string("undo or redo: ") + kind.name);
    }

    project.history.clear();
    const std::size_t before = mallinfo2().uordblks;
    for (std::size_t i = 0; i < TimelineHistory::maxSteps; ++i)
        timeline.updateStampTimes(line(i), stamp(line(i), i * 7), double(i % 997) + 0.25, {});
    std::printf("%-44s %8zu\n", "memory of 2,000 steps, kB",
                (mallinfo2().uordblks - before) / 1000);
}

}  // namespace
}  // namespace tembrix

int main() {
    std::printf("%-44s %8s %8s %8s %8s\n", "10,000 stamps on 50 lines, ms", "median", "95 %",
                "worst", "95 % cpu");
    tembrix::strikes();
    for (const auto& [lines, where] : {std::pair(50, "50 lines"), std::pair(1, "one line")}) {
        tembrix::bytesOfPresses(lines, where);
        tembrix::storing(lines, where);
    }
    tembrix::undoSteps();
}
