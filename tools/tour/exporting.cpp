// Exports a timeline to a film and checks its content.

#include <QDialog>
#include <cmath>
#include <cstdio>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "core/export/cut_planning.h"
#include "core/export/export_helper.h"
#include "core/playback/video_player_manager.h"
#include "fixtures/frame_code.h"
#include "tour/stage.h"

namespace tembrix::tour {

namespace {

// Checks that every cut of the film starts with the first frame of its stamp.
void checkTheFilm(Stage& stage, const std::filesystem::path& film) {
    const CutPlanInput input{stage.lines(), *stage.project().timeline.selectedLineID,
                             *stage.core().tagLibrary.merged,
                             stage.project().player.videoDuration()};
    StandardLog log;
    FfmpegMedia media;
    const auto cuts = getSegmentsForExport(cuts::CurrentTimeline{}, input, log);
    double place = 0;
    for (const auto& cut : cuts) {
        const double start = cut.timeRange.start.seconds();
        const auto expected = media.frame(stage.video, start);
        const auto shown = media.frame(film, std::ceil(place * 30 - 1e-6) / 30);
        if (!expected || !shown)
            throw Failure("a frame could not be read");
        const auto want = readFrameNumber(*expected);
        const auto have = readFrameNumber(*shown);
        std::printf("  cut at %7.3f s: frame %d of the video, %d in the film\n", start,
                    want.value_or(-1), have.value_or(-1));
        // The frame of the film may be up to one film frame after the start of the cut.
        if (!want || !have || *have < *want || *have > *want + 1)
            throw Failure("the film does not show the frame of its cut");
        place += cut.timeRange.duration.seconds();
    }
    const auto info = media.probe(film);
    if (!info || std::abs(info->duration - place) > 1.0 / 30 + 0.002)
        throw Failure("the film is not as long as its cuts");
    std::printf("  film of %.3f s, its cuts last %.3f s\n", info->duration, place);
}

}  // namespace

void exportTheFilm(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("The timeline becomes a film");
    driver.activate("timelines");
    stage.project().timeline.selectLine(stage.lines()[1]->id);
    driver.choose("fullControlExport", "fullControlButtonExportTimeline");
    driver.picture("export-mode", driver.sheet());
    driver.key(Qt::Key_Return);  // a film is the default
    driver.pause(0.4);
    driver.picture("exporting", driver.window("timelines"));
    driver.waitFor(
        "the save panel", [&] { return driver.isVisible("savePanel"); }, 120);
    const std::filesystem::path film = driver.output() / "film.mp4";
    stage.choosePath("savePanel", film);
    driver.waitFor("the film", [&] { return std::filesystem::exists(film); });
    checkTheFilm(stage, film);
}

}  // namespace tembrix::tour
