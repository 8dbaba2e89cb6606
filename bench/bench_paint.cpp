// Painting the control window with 10,000 stamps on 50 lines: everything, as for scrolling or
// zooming, and a move of the playhead.

#include <QApplication>
#include <benchmark/benchmark.h>
#include <memory>
#include <random>

#include "app/control/timeline_canvas.h"
#include "app/theme/theme.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

constexpr double duration = 5400;  // seconds

TimelineStamp makeStamp(double start, double length, int color) {
    const char* colors[] = {"30D158", "0A84FF", "FF9F0A", "BF5AF2", "FFD60A", "64D2FF", "8E8E93"};
    TimelineStamp stamp;
    stamp.id = Uuid::random();
    stamp.idTag = "pass";
    stamp.label = "Pass";
    stamp.colorHex = colors[color % 7];
    stamp.timeStartSeconds = start;
    stamp.timeFinishSeconds = start + length;
    return stamp;
}

TimelineLines lines(int count) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> at(0, duration - 20);
    std::uniform_real_distribution<double> length(1, 15);
    TimelineLines result;
    for (int i = 0; i < count; ++i) {
        TimelineLine line{Uuid::random(), "Line", {}, {}};
        for (int k = 0; k < 10000 / count; ++k)
            line.stamps.push_back(makeStamp(at(random), length(random), i + k));
        result.push_back(line);
    }
    return result;
}

struct Window {
    CoreProject project;
    TimelineEditingModel model{project.timeline,  project.tagLibrary, project.markupModes,
                               project.player,    project.focus,      project.defaults,
                               project.scheduler, project.events};
    std::unique_ptr<TimelineCanvas> canvas;

    explicit Window(int lineCount = 50) {
        project.openVideo();
        project.player.pause();
        project.players.player()->setDuration(duration);
        project.timeline.replaceLines(lines(lineCount));
        canvas = std::make_unique<TimelineCanvas>(model, project.timeline);
        canvas->resize(1920, 1080);
        canvas->show();
        QApplication::processEvents();
    }
};

void paintEverything(benchmark::State& state) {
    Window window;
    for (int i = 0; i < static_cast<int>(state.range(0)) - 1; ++i)
        for (int half = 0; half < 2; ++half)
            window.model.zoomIn();
    window.canvas->refreshAxis();
    double scroll = 0;
    for (auto _ : state) {
        window.canvas->setScroll(scroll += 1, 0);
        QApplication::processEvents();
    }
}
BENCHMARK(paintEverything)
    ->Name("Paint of 50 lines with 10,000 stamps, zoom")
    ->Arg(1)
    ->Arg(8)
    ->Unit(benchmark::kMillisecond);

// What a press costs the window if all stamps are on one line.
void stampAdded(benchmark::State& state) {
    Window window(1);
    TimelineDataManager& timeline = window.project.timeline;
    const Uuid line = timeline.lines->back()->id;
    int count = 0;
    for (auto _ : state) {
        auto edit = timeline.begin();
        edit.make(InsertStamp{line, atEnd, makeStamp(++count * 7 % 5000, 8, count)});
        timeline.commit(edit, {}, TimelineDataManager::Saving::withNextEdit);
        QApplication::processEvents();
    }
}
BENCHMARK(stampAdded)->Name("Stamp added to a line of 10,000")->Unit(benchmark::kMillisecond);

void playheadMove(benchmark::State& state) {
    Window window;
    double time = 0;
    for (auto _ : state) {
        window.project.player.seek(time += 3);
        window.canvas->movePlayhead();
        QApplication::processEvents();
        if (time > duration - 10)
            time = 0;
    }
}
BENCHMARK(playheadMove)->Name("Playhead move")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tembrix

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    tembrix::theme::applyTheme(application);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
