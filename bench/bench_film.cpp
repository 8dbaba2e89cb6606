// Compares a film of ten cuts of five seconds at 1080p, with text overlays, to the same film made
// by the ffmpeg program with the same encoder settings. Fails if ours is slower.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <future>
#include <string>
#include <sys/resource.h>
#include <vector>

#include "adapters/ffmpeg/ffmpeg_movie_renderer.h"
#include "fixtures/brush.h"
#include "fixtures/match_video.h"

namespace {

namespace fs = std::filesystem;
using namespace tembrix;

constexpr int cuts = 10;
constexpr double cutSeconds = 5;
constexpr int width = 1920, height = 1080, barHeight = 72;

double cutStart(int cut) {
    return 0.7 + cut * 6.3;
}

MovieOverlay bar(int cut) {
    MovieOverlay overlay;
    overlay.image = ImageBuffer(width, barHeight);
    for (std::size_t i = 3; i < overlay.image.pixels.size(); i += 4)
        overlay.image.pixels[i] = 140;
    Brush(overlay.image)
        .text("NORTH SOUTH 0:" + std::to_string(cut), {12, 18}, 36, {250, 250, 250});
    overlay.y = height - barHeight;
    overlay.start = cut * cutSeconds;
    overlay.duration = cutSeconds;
    return overlay;
}

template <class Work>
double secondsOf(Work work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The processor time of this process or of its child processes; more stable than wall time on a
// busy machine.
double processorSeconds(int whose) {
    rusage used{};
    getrusage(whose, &used);
    const auto seconds = [](const timeval& t) {
        return double(t.tv_sec) + double(t.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

double ours(const fs::path& source, const fs::path& target) {
    FfmpegMovieRenderer renderer;
    MovieJob job;
    job.source = source;
    job.target = target;
    job.renderSize = {width, height};
    for (int cut = 0; cut < cuts; ++cut) {
        job.pieces.push_back(SourcePiece{cutStart(cut), cutSeconds});
        job.overlays.push_back(bar(cut));
    }
    return secondsOf([&] {
        std::promise<Result<fs::path>> end;
        auto session = renderer.start(job, [&](auto result) { end.set_value(result); });
        const auto result = session ? end.get_future().get() : Result<fs::path>(session.error());
        if (!result) {
            std::fprintf(stderr, "%s\n", result.error().text.c_str());
            std::exit(1);
        }
    });
}

double plain(const fs::path& source, const fs::path& target) {
    std::string inputs, chains, joined;
    for (int cut = 0; cut < cuts; ++cut) {
        inputs += fmt::format(" -ss {} -t {} -i '{}'", cutStart(cut), cutSeconds, source.string());
        chains += fmt::format(
            "[{0}:v]drawbox=0:{1}:{2}:{3}:black@0.55:fill,drawtext=text='NORTH "
            "SOUTH {0}':x=12:y={4}:fontsize=36:fontcolor=white[v{0}];",
            cut, height - barHeight, width, barHeight, height - barHeight + 18);
        joined += fmt::format("[v{0}][{0}:a]", cut);
    }
    const std::string command = fmt::format(
        "ffmpeg -nostdin -v error -y{} -filter_complex \"{}{}concat=n={}:v=1:a=1[v][a]\" -map "
        "'[v]' -map '[a]' -r 30 -c:v libx264 -preset veryfast -crf 18 -g 60 -pix_fmt yuv420p "
        "-c:a aac -b:a 192k '{}'",
        inputs, chains, joined, cuts, target.string());
    return secondsOf([&] {
        if (std::system(command.c_str()) != 0)
            std::exit(1);
    });
}

}  // namespace

int main(int count, char** arguments) {
    const int rounds = count > 1 ? std::max(1, std::atoi(arguments[1])) : 3;
    const fs::path folder = TEMBRIX_FIXTURE_FOLDER;
    fs::create_directories(folder);
    const auto source = folder / "bench-1080p.mp4";
    if (!fs::exists(source)) {
        std::printf("making the match video...\n");
        std::fflush(stdout);
        MatchVideo video;
        video.width = width;
        video.height = height;
        video.seconds = 64;
        const auto part = folder / "bench-1080p.part.mp4";
        if (auto made = makeMatchVideo(video, part); !made) {
            std::fprintf(stderr, "%s\n", made.error().text.c_str());
            return 1;
        }
        fs::rename(part, source);
    }
    const auto target = folder / "bench-film.mp4";
    std::vector<double> our, their, ratios;
    const double selfBefore = processorSeconds(RUSAGE_SELF);
    const double childrenBefore = processorSeconds(RUSAGE_CHILDREN);
    for (int round = 0; round < rounds; ++round) {
        fs::remove(target);
        our.push_back(ours(source, target));
        fs::remove(target);
        their.push_back(plain(source, target));
        ratios.push_back(our.back() / their.back());
    }
    fs::remove(target);
    const auto middle = [](std::vector<double>& values) {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    const double ratio = middle(ratios);
    std::printf("Film of 10 cuts, 1080p | ours %.2f s | ffmpeg %.2f s | ratio %.2f | holds 1.00\n",
                middle(our), middle(their), ratio);
    std::printf("Processor time of one film | ours %.2f s | ffmpeg %.2f s\n",
                (processorSeconds(RUSAGE_SELF) - selfBefore) / rounds,
                (processorSeconds(RUSAGE_CHILDREN) - childrenBefore) / rounds);
    return ratio <= 1.0 ? 0 : 1;
}
