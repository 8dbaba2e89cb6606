// From an empty library to marks on the timelines.

#include <cmath>
#include <fstream>
#include <unistd.h>

#include "core/playback/video_player_manager.h"
#include "tour/stage.h"

namespace tembrix::tour {

namespace {

// The resident memory of the process.
long residentMegabytes() {
    std::ifstream pages("/proc/self/statm");
    long total = 0;
    long resident = 0;
    pages >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE) / (1024 * 1024);
}

}  // namespace

void addTheVideo(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("An empty library; a video is added");
    driver.picture("list-empty", &stage.application().listWindow());
    driver.activate("list");
    driver.click("addVideoTitle");
    stage.choosePath("openPanel", stage.video);
    driver.control("videosViewFieldTeam1");
    driver.type("Red Lions");
    driver.key(Qt::Key_Tab);
    driver.type("Blue Foxes");
    driver.key(Qt::Key_Tab);
    driver.type("2-1");
    driver.picture("match-information", driver.control("videosViewTitleMatchInfo"));
    driver.key(Qt::Key_Return);
    driver.waitGone("videosViewTitleMatchInfo");
    driver.pause(1.0);  // the preview picture appears
    driver.picture("list", &stage.application().listWindow());

    driver.say("Return opens it as a project: three windows");
    stage.openVideo();
    driver.waitFor("the video to play", [&] { return stage.now() > 0.3; });
    driver.screen("project");
    driver.say(QStringLiteral("memory with the project open: %1 MB").arg(residentMegabytes()));
    driver.say("A timeline is made");
    driver.activate("timelines");
    stage.addLine("Attack");
}

void mark(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("Marks by hot keys while the video runs");
    driver.activate("tagLibrary");
    stage.project().player.seek(10);
    stage.playUntil(11);
    driver.key(Qt::Key_N);
    driver.waitFor("the note's stamp", [&] { return stage.stampCount() == 1; });

    stage.playUntil(13);
    driver.key(Qt::Key_Z);  // starts an interval
    stage.playUntil(16);
    driver.key(Qt::Key_G);  // a goal, with labels
    driver.sheet();
    driver.key(Qt::Key_1);
    driver.key(Qt::Key_A);
    driver.picture("labels", driver.sheet());
    driver.screen("labels-on-screen");
    driver.key(Qt::Key_Return);
    driver.waitFor("the goal's stamp", [&] { return stage.stampCount() == 2; });
    stage.waitForPlaying();
    stage.playUntil(19);
    driver.screen("open-interval");
    driver.key(Qt::Key_Z);  // ends the interval
    driver.waitFor("the interval's stamp", [&] { return stage.stampCount() == 3; });
    stage.waitForPlaying();

    driver.say("The blank pauses, Shift and the arrows seek");
    driver.key(Qt::Key_Space);
    driver.waitFor("the pause",
                   [&] { return *stage.project().player.status != PlayerStatus::playing; });
    const double before = stage.now();
    driver.key(Qt::Key_Right, Qt::ShiftModifier);
    driver.waitFor("the seek", [&] { return std::abs(stage.now() - before - 3) < 0.1; });
    driver.screen("marked");
}

}  // namespace tembrix::tour
