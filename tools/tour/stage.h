#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "core/composition/core_services.h"
#include "core/shell/project.h"
#include "main/application.h"
#include "tour/driver.h"

namespace tembrix::tour {

// What the chapters of the tour share: the running program, the hands that drive it, and the
// questions that the chapters ask of it. A chapter begins where the one before it ended.
class Stage {
  public:
    Stage(const std::filesystem::path& video, const std::filesystem::path& output);
    ~Stage();

    // Quits the program and starts it again, with `between` done while it does not run.
    void restart(const std::function<void()>& between);

    Application& application() { return *application_; }
    CoreServices& core() const { return application_->core(); }
    Project& project() const { return *core().windows.project(); }  // one is open

    double now() const;
    const TimelineLines& lines() const { return *project().timeline.lines; }
    std::size_t stampCount() const;
    void playUntil(double seconds) const;
    void waitForPlaying() const;
    // Answers a file panel; its own fields are the toolkit's.
    void choosePath(const QString& panel, const std::filesystem::path& path) const;
    void addLine(const QString& name) const;
    void openVideo() const;  // the one that the list stands on
    void closeProject() const;

    const Driver driver;
    // The match video, in a folder of the tour's own: a chapter moves it.
    std::filesystem::path video;

  private:
    std::unique_ptr<Application> application_;
};

// The chapters, in the order in which they play.
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
