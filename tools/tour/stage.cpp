#include "tour/stage.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>

#include "core/playback/video_player_manager.h"

namespace tembrix::tour {

namespace {

std::unique_ptr<Application> startProgram() {
    auto application = std::make_unique<Application>(findResources());
    application->start();
    return application;
}

}  // namespace

Stage::Stage(const std::filesystem::path& match, const std::filesystem::path& output)
    : driver(output), video(output / "videos/match.mp4"), application_(startProgram()) {
    std::filesystem::create_directories(video.parent_path());
    std::filesystem::copy_file(match, video, std::filesystem::copy_options::overwrite_existing);
}

Stage::~Stage() {
    std::error_code ignored;
    std::filesystem::remove_all(driver.output() / "videos", ignored);
}

void Stage::restart(const std::function<void()>& between) {
    application_.reset();
    between();
    application_ = startProgram();
}

double Stage::now() const {
    return project().player.currentTime();
}

std::size_t Stage::stampCount() const {
    std::size_t count = 0;
    for (const auto& line : lines())
        count += line->stamps.size();
    return count;
}

void Stage::playUntil(double seconds) const {
    driver.waitFor(
        QStringLiteral("the video to reach %1 s").arg(seconds), [&] { return now() >= seconds; },
        60);
}

void Stage::waitForPlaying() const {
    driver.waitFor("the video to run on",
                   [&] { return *project().player.status == PlayerStatus::playing; });
}

void Stage::choosePath(const QString& panel, const std::filesystem::path& path) const {
    QWidget* dialog = driver.control(panel);
    auto* field = dialog->findChild<QLineEdit*>("fileNameEdit");
    if (!field)
        throw Failure("the file panel has no field for a name");
    driver.waitFor("the file panel to be active",
                   [&] { return QApplication::activeWindow() == dialog; });
    field->setText(QString::fromStdString(path.string()));
    field->setFocus();
    driver.key(Qt::Key_Return);
    driver.waitGone(panel);
}

void Stage::addLine(const QString& name) const {
    const std::size_t before = lines().size();
    driver.click("fullControlButtonAddTimeline");
    driver.picture("new-timeline", driver.sheet());
    driver.type(name);
    driver.key(Qt::Key_Return);
    driver.waitFor("the line", [&] { return lines().size() == before + 1; });
    driver.noSheet();
}

void Stage::openVideo() const {
    driver.activate("list");
    driver.control("videosList")->setFocus();
    driver.key(Qt::Key_Return);
    driver.window("timelines");
    driver.window("tagLibrary");
}

void Stage::closeProject() const {
    driver.window("timelines")->close();
    driver.waitGone("tagLibrary");
    driver.waitGone("video");
}

}  // namespace tembrix::tour
