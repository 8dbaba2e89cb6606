// An hour of marking, two events a second, on the whole road from the key to the database: what is
// lost, how the last minutes compare with the first, and what the process holds in memory.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <unistd.h>
#include <vector>

#include "fakes/pressing_project.h"
#include "fakes/temp_folder.h"

namespace {

using namespace tembrix;

constexpr int presses = 7200;
constexpr int minute = 120;  // presses

double megabytes() {
    std::ifstream pages("/proc/self/statm");
    long total = 0;
    long resident = 0;
    pages >> total >> resident;
    return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

double percentile95(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() * 95 / 100];
}

std::size_t stampsOf(const TimelineLines& lines) {
    std::size_t count = 0;
    for (const auto& line : lines)
        count += line->stamps.size();
    return count;
}

}  // namespace

int main() {
    TempFolder folder;
    std::string video;
    std::vector<double> times;
    double early = 0;
    double late = 0;
    {
        PressingProject project(folder.path());
        video = project.addVideo("match.mp4");
        project.open(video);
        for (int i = 0; i < presses; ++i) {
            project.players.player()->advanceTo(i * 0.5);
            const auto start = std::chrono::steady_clock::now();
            project.strike();
            times.push_back(
                std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                    .count());
            project.scheduler.advance(0.5);
            if (i == presses / 2)
                early = megabytes();
        }
        late = megabytes();
    }
    // No termination, as after a kill: what the next start finds.
    PressingProject again(folder.path());
    const std::size_t kept = stampsOf(again.storage.loadTimeline(video));
    std::printf("Marks lost in an hour | %d\n", presses - static_cast<int>(kept));
    std::printf("Press at the end of the hour, 95 %% | %.2f ms\n",
                percentile95({times.end() - 10 * minute, times.end()}));
    std::printf("Memory after half an hour and an hour | %.1f %.1f MB\n", early, late);
    return kept == static_cast<std::size_t>(presses) ? 0 : 1;
}
