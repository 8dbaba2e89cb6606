// The cost of a press and of opening a video in the codec and the store, with 10,000 stamps on 50
// lines.

#include <benchmark/benchmark.h>
#include <memory>
#include <string>

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/timeline_encoder.h"
#include "fakes/captured_log.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

TimelineLines timelines(int lineCount, int stampsPerLine) {
    TimelineLines lines;
    for (int l = 0; l < lineCount; ++l) {
        TimelineLine line{Uuid::random(), "Передача вперёд " + std::to_string(l), {}, freshId()};
        for (int s = 0; s < stampsPerLine; ++s) {
            TimelineStamp stamp;
            stamp.id = Uuid::random();
            stamp.idTag = line.tagIdForMode;
            stamp.primaryID = line.tagIdForMode;
            stamp.timeStartSeconds = s * 27.031 + l / 7.0;
            stamp.timeFinishSeconds = stamp.timeStartSeconds + 8.0;
            stamp.colorHex = "FF8000";
            stamp.label = line.name;
            stamp.isActiveForMapView = s % 3 == 0;
            stamp.labels = {line.tagIdForMode, stamp.id.text()};
            stamp.timeEvents = {line.tagIdForMode};
            if (s % 3 == 0)
                stamp.position = Point{s / 3.0, l / 7.0};
            line.stamps.push_back(std::move(stamp));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

void encodeTimelines(benchmark::State& state) {
    const auto lines = timelines(50, 200);
    for (auto _ : state)
        benchmark::DoNotOptimize(encode(lines));
    state.SetLabel(std::to_string(encode(lines).value().size()) + " bytes");
}
BENCHMARK(encodeTimelines)->Unit(benchmark::kMillisecond);

void decodeTimelines(benchmark::State& state) {
    const auto json = encode(timelines(50, 200)).value();
    for (auto _ : state)
        benchmark::DoNotOptimize(decode<TimelineLines>(json));
}
BENCHMARK(decodeTimelines)->Unit(benchmark::kMillisecond);

// Encodes one changed stamp, on 50 lines and, as the worst case, on one line.
void encodeOneChangedStamp(benchmark::State& state) {
    const int lineCount = static_cast<int>(state.range(0));
    auto lines = timelines(lineCount, 10000 / lineCount);
    TimelineEncoder encoder;
    (void)encoder.encode(lines);
    std::size_t press = 0;
    for (auto _ : state) {
        auto& stamps = lines[++press % lines.size()].write().stamps;
        stamps[press % stamps.size()].write().timeFinishSeconds += 0.1;
        benchmark::DoNotOptimize(encoder.encode(lines));
    }
}
BENCHMARK(encodeOneChangedStamp)->Arg(50)->Arg(1)->Unit(benchmark::kMillisecond);

// A press in the store that changes a stamp in the middle of its line.
void saveOneChangedStamp(benchmark::State& state) {
    TempFolder folder;
    CapturedLog log;
    VirtualScheduler scheduler;
    SqliteUserDefaults defaults(folder.path() / "defaults.db", log);
    InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
    auto lines = timelines(50, 200);
    storage.saveTimeline(lines, "video");
    std::size_t press = 0;
    for (auto _ : state) {
        auto& stamps = lines[++press % lines.size()].write().stamps;
        stamps[press % stamps.size()].write().timeFinishSeconds += 0.1;
        storage.saveTimeline(lines, "video");
    }
}
BENCHMARK(saveOneChangedStamp)->Unit(benchmark::kMillisecond);

void loadTimeline(benchmark::State& state) {
    TempFolder folder;
    CapturedLog log;
    VirtualScheduler scheduler;
    SqliteUserDefaults defaults(folder.path() / "defaults.db", log);
    InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
    storage.saveTimeline(timelines(50, 200), "video");
    for (auto _ : state)
        benchmark::DoNotOptimize(storage.loadTimeline("video"));
}
BENCHMARK(loadTimeline)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tembrix
