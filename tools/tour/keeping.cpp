// The library, and what happens when files are moved or vanish.

#include <QApplication>
#include <QDialog>
#include <QListView>
#include <fstream>

#include "adapters/qt/qt_directories.h"
#include "core/playback/video_player_manager.h"
#include "core/storage/data_layout.h"
#include "tour/stage.h"

namespace tembrix::tour {

namespace {

void listMenu(const Stage& stage, const QString& entry) {
    stage.driver.control("videosList")->setFocus();
    stage.driver.openMenu();
    stage.driver.chooseEntry(entry);
}

int videosShown(const Stage& stage) {
    auto* list = stage.driver.window("list")->findChild<QListView*>("videosList");
    return list->isVisible() ? list->model()->rowCount() : 0;
}

}  // namespace

void keepTheLibrary(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("Closing one window of the project closes it whole");
    const std::size_t stamps = stage.stampCount();
    stage.closeProject();
    QWidget* list = &stage.application().listWindow();
    driver.activate("list");

    driver.say("A favorite, a new name, search and filters");
    listMenu(stage, "addToFavorites");
    driver.key(Qt::Key_F2);
    driver.sheet();
    driver.type("Cup final");
    driver.picture("rename-video", driver.sheet());
    driver.key(Qt::Key_Return);
    driver.noSheet();
    driver.click("videosFilterFavorites");
    driver.control("searchVideos")->setFocus();
    driver.type("final");
    driver.waitFor("the video", [&] { return videosShown(stage) == 1; });
    driver.picture("list-found", list);
    driver.type("x");
    driver.waitFor("no video", [&] { return videosShown(stage) == 0; });
    driver.picture("list-nothing-found", list);
    driver.key(Qt::Key_A, Qt::ControlModifier);
    driver.key(Qt::Key_Delete);
    driver.click("videosFilterAll");

    driver.say("The video is moved to another folder; the list asks, and its marks are kept");
    const auto moved = stage.video.parent_path() / "archive/final.mp4";
    std::filesystem::create_directories(moved.parent_path());
    std::filesystem::rename(stage.video, moved);
    stage.video = moved;
    driver.control("videosList")->setFocus();
    driver.key(Qt::Key_Return);
    driver.picture("video-unavailable", driver.sheet());
    driver.key(Qt::Key_Return);
    stage.choosePath("openPanel", moved);
    driver.waitFor("the video to play", [&] { return stage.now() > 0.3; });
    if (stage.stampCount() != stamps)
        throw Failure("marks were lost with the move of the video");
    driver.screen("moved-video");
    stage.closeProject();
}

// Opening a file that is not a video only shows a message.
void openGarbage(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("A file that is no video is added and opened");
    const auto garbage = stage.video.parent_path() / "not-a-video.mp4";
    std::ofstream(garbage) << std::string(5000, 'x');
    driver.activate("list");
    driver.click("addVideoTitle");
    stage.choosePath("openPanel", garbage);
    driver.control("videosViewFieldTeam1");
    driver.key(Qt::Key_Return);
    driver.waitGone("videosViewTitleMatchInfo");
    driver.control("videosList")->setFocus();
    driver.key(Qt::Key_End);
    driver.key(Qt::Key_Return);
    driver.window("timelines");
    driver.pause(1);
    driver.screen("not-a-video");
    stage.closeProject();
}

void loseTheData(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("The working data is backed up, lost while the program does not run, and restored");
    driver.activate("list");
    driver.click("dataManagementTitle");
    driver.sheet();
    driver.click("dataManagementCreateBackup");
    driver.pause(1);
    driver.picture("data", driver.sheet());
    driver.key(Qt::Key_Escape);
    driver.noSheet();
    const int videos = videosShown(stage);
    stage.restart([] {
        std::filesystem::remove_all(qtDirectories().documents / layout::dataFolder);
        std::filesystem::remove_all(programDataFolder());
    });
    driver.waitFor("the list as it was", [&] { return videosShown(stage) == videos; });
    driver.pause(1.0);
    driver.picture("list-restored", &stage.application().listWindow());
}

}  // namespace tembrix::tour
