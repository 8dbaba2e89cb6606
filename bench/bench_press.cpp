// The cost of a key press, from the keyboard to the stamp in the database, and of undo, with 10,000
// stamps on 50 lines and without windows; painting is measured separately. There are twenty presses
// per second, many more than a user makes, so the database's own thread runs as usual. The last
// column is the processor time of this thread, which is more stable on a busy machine.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <malloc.h>
#include <string>
#include <thread>
#include <vector>

#include "fakes/pressing_project.h"
#include "fakes/temp_folder.h"

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

void fillLibrary(PressingProject& project, int videos) {
    // The library of a season: the other videos have timelines as well.
    for (int i = 1; i < videos; ++i) {
        const std::string id = project.addVideo("other" + std::to_string(i) + ".mp4");
        project.storage.saveTimeline(timelines(project.tagLibrary.active->tags, 10, 40), id);
    }
    const std::string match = project.addVideo("match.mp4");
    project.storage.saveTimeline(timelines(project.tagLibrary.active->tags, 50, 200), match);
    project.open(match);
}

// Alternates between a small and a large library, so that a busy machine affects both.
void strikes() {
    struct Match {
        explicit Match(int count) : videos(count) { fillLibrary(project, videos); }
        int videos;
        TempFolder folder;
        PressingProject project{folder.path()};
        Times times;
    };
    Match small(20);
    Match large(200);
    for (int i = 0; i < presses; ++i)
        for (Match* match : {&small, &large}) {
            match->project.players.player()->advanceTo(i * 30.0);
            match->times.measure([&] { match->project.strike(); });
            match->project.scheduler.advance(0.2);
        }
    for (Match* match : {&small, &large})
        match->times.print("press to stored, " + std::to_string(match->videos) + " videos");
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
    tembrix::undoSteps();
}
