#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "core/composition/core_services.h"
#include "core/shell/project.h"
#include "main/application.h"
#include "tour/driver.h"

namespace tembrix::tour {

// The state shared by the chapters of the tour: the running program, its driver and queries. Each
// chapter starts where the previous one ended.
class Stage {
  public:
    Stage(const std::filesystem::path& video, const std::filesystem::path& output);
    ~Stage();

    // Quits the program, calls `between` and starts it again.
    void restart(const std::function<void()>& between);

    Application& application() { return *application_; }
    CoreServices& core() const { return application_->core(); }
    Project& project() const { return *core().windows.project(); }  // must be open

    double now() const;
    const TimelineLines& lines() const { return *project().timeline.lines; }
    std::size_t stampCount() const;
    void playUntil(double seconds) const;
    void waitForPlaying() const;
    // Enters a path into a file panel of Qt.
    void choosePath(const QString& panel, const std::filesystem::path& path) const;
    void addLine(const QString& name) const;
    void openVideo() const;  // opens the video selected in the list
    void closeProject() const;

    const Driver driver;
    // The match video. It is in a folder of the tour, because a chapter moves it.
    std::filesystem::path video;

  private:
    std::unique_ptr<Application> application_;
};

// The chapters in their order.
void addTheVideo(Stage& stage);
void mark(Stage& stage);
void edit(Stage& stage);
void arrangeLines(Stage& stage);
void lookCloser(Stage& stage);
void useOwnCollection(Stage& stage);
void exportTheFilm(Stage& stage);
void keepTheLibrary(Stage& stage);
void openGarbage(Stage& stage);
void loseTheData(Stage& stage);

}  // namespace tembrix::tour
