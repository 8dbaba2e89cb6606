// The demo tour: from an empty library to a film, through the real windows, by keyboard wherever a
// user could.
//   demo_tour VIDEO OUTPUT

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QLineEdit>
#include <QPixmap>
#include <QScreen>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <unistd.h>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "app/annotation/timeline_canvas.h"
#include "app/services.h"
#include "app/widgets/qt_text.h"
#include "core/annotation/timeline_data_manager.h"
#include "core/export/cut_planning.h"
#include "core/export/export_helper.h"
#include "core/playback/video_player_manager.h"
#include "fixtures/frame_code.h"
#include "main/application.h"
#include "tour/driver.h"

namespace tembrix::tour {
namespace {

// What the process holds in memory, as the system counts it.
long residentMegabytes() {
    std::ifstream pages("/proc/self/statm");
    long total = 0;
    long resident = 0;
    pages >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE) / (1024 * 1024);
}

class Tour {
  public:
    Tour(Application& application, std::filesystem::path video, std::filesystem::path output)
        : application_(application),
          services_(application.services()),
          video_(std::move(video)),
          driver_(output) {}

    void run() {
        addTheVideo();
        openIt();
        mark();
        edit();
        exportTheFilm();
        checkTheFilm();
        lookAround();
        closeIt();
        openGarbage();
    }

  private:
    double now() const { return services_.player.currentTime(); }
    std::size_t stampCount() const {
        std::size_t count = 0;
        for (const auto& line : *services_.timeline.lines)
            count += line->stamps.size();
        return count;
    }
    void playUntil(double seconds) {
        driver_.waitFor(
            QStringLiteral("the video to reach %1 s").arg(seconds),
            [&] { return now() >= seconds; }, 60);
    }

    void addTheVideo() {
        driver_.say("An empty library; a video is added");
        driver_.picture("list-empty", &application_.listWindow());
        driver_.activate("list");
        driver_.click("addVideoTitle");
        choosePath("openPanel", video_);
        driver_.control("videosViewFieldTeam1");
        driver_.type("Red Lions");
        driver_.key(Qt::Key_Tab);
        driver_.type("Blue Foxes");
        driver_.key(Qt::Key_Tab);
        driver_.type("2-1");
        driver_.picture("match-information", driver_.control("videosViewTitleMatchInfo"));
        driver_.key(Qt::Key_Return);
        driver_.waitGone("videosViewTitleMatchInfo");
        driver_.pause(1.0);  // the preview picture comes by itself
        driver_.picture("list", &application_.listWindow());
    }

    // A file panel: its own fields are the toolkit's.
    void choosePath(const QString& panel, const std::filesystem::path& path) {
        QWidget* dialog = driver_.control(panel);
        auto* field = dialog->findChild<QLineEdit*>("fileNameEdit");
        if (!field)
            throw Failure("the file panel has no field for a name");
        driver_.waitFor("the file panel to be active",
                        [&] { return QApplication::activeWindow() == dialog; });
        field->setText(QString::fromStdString(path.string()));
        field->setFocus();
        driver_.key(Qt::Key_Return);
        driver_.waitGone(panel);
    }

    void openIt() {
        driver_.say("Return opens it as a project: three windows");
        driver_.activate("list");
        driver_.control("videosList")->setFocus();
        driver_.key(Qt::Key_Return);
        driver_.window("timelines");
        driver_.window("tagLibrary");
        driver_.waitFor("the video to play", [&] { return now() > 0.3; });
        driver_.screen("project");
        driver_.say(QStringLiteral("memory with the project open: %1 MB").arg(residentMegabytes()));
        driver_.say("A timeline is made");
        driver_.activate("timelines");
        driver_.click("fullControlButtonAddTimeline");
        driver_.waitFor("the sheet",
                        [] { return qobject_cast<QDialog*>(QApplication::activeWindow()); });
        driver_.type("Attack");
        driver_.picture("new-timeline", QApplication::activeWindow());
        driver_.key(Qt::Key_Return);
        driver_.waitFor("the line", [&] { return services_.timeline.lines->size() == 2; });
    }

    void mark() {
        driver_.say("Marks by hot keys while the video runs");
        driver_.activate("tagLibrary");
        services_.player.seek(10);
        playUntil(11);
        driver_.key(Qt::Key_N);
        driver_.waitFor("the note's stamp", [&] { return stampCount() == 1; });

        playUntil(13);
        driver_.key(Qt::Key_Z);  // an interval opens
        playUntil(16);
        driver_.key(Qt::Key_G);  // a goal, with labels
        driver_.waitFor("the label sheet",
                        [] { return qobject_cast<QDialog*>(QApplication::activeWindow()); });
        driver_.key(Qt::Key_1);
        driver_.key(Qt::Key_A);
        driver_.picture("labels", QApplication::activeWindow());
        driver_.screen("labels-on-screen");
        driver_.key(Qt::Key_Return);
        driver_.waitFor("the goal's stamp", [&] { return stampCount() == 2; });
        driver_.waitFor("the video to run on",
                        [&] { return *services_.player.status == PlayerStatus::playing; });
        playUntil(19);
        driver_.screen("open-interval");
        driver_.key(Qt::Key_Z);  // and closes
        driver_.waitFor("the interval's stamp", [&] { return stampCount() == 3; });
        driver_.waitFor("the video to run on",
                        [&] { return *services_.player.status == PlayerStatus::playing; });

        driver_.say("The blank pauses, Shift and the arrows seek");
        driver_.key(Qt::Key_Space);
        driver_.waitFor("the pause",
                        [&] { return *services_.player.status != PlayerStatus::playing; });
        const double before = now();
        driver_.key(Qt::Key_Right, Qt::ShiftModifier);
        driver_.waitFor("the seek", [&] { return std::abs(now() - before - 3) < 0.1; });
        driver_.screen("marked");
    }

    void edit() {
        driver_.say("Undo takes the last mark back, redo brings it again");
        driver_.activate("timelines");
        driver_.key(Qt::Key_Z, Qt::ControlModifier);
        driver_.waitFor("the undo", [&] { return stampCount() == 2; });
        driver_.key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        driver_.waitFor("the redo", [&] { return stampCount() == 3; });

        driver_.say("A second timeline; the interval is moved to it and its end dragged");
        driver_.click("fullControlButtonAddTimeline");
        driver_.waitFor("the sheet",
                        [] { return qobject_cast<QDialog*>(QApplication::activeWindow()); });
        driver_.type("Possession");
        driver_.key(Qt::Key_Return);
        driver_.waitFor("the line", [&] { return services_.timeline.lines->size() == 3; });
        driver_.waitFor("the sheet to close",
                        [] { return !qobject_cast<QDialog*>(QApplication::activeWindow()); });
        auto* canvas = driver_.window("timelines")->findChild<TimelineCanvas*>();
        QRectF place = canvas->stampArea(1, 2);
        const QPoint middle = place.center().toPoint();
        driver_.drag(canvas, middle, middle + QPoint(0, TimelineMetrics::rowHeight));
        driver_.waitFor("the move",
                        [&] { return (*services_.timeline.lines)[2]->stamps.size() == 1; });

        const auto length = [&] {
            return (*services_.timeline.lines)[2]->stamps.front()->length();
        };
        const double before = length();
        place = canvas->stampArea(2, 0);
        driver_.clickAt(canvas, place.center().toPoint());
        driver_.waitFor("the stamp to be chosen",
                        [&] { return services_.timeline.selectedStampID->has_value(); });
        services_.player.pause();
        const QPoint grip(qRound(place.right()) - 3, middle.y() + TimelineMetrics::rowHeight);
        driver_.drag(canvas, grip, grip + QPoint(90, 0),
                     [&] { driver_.screen("an-edge-is-dragged"); });
        driver_.waitFor("the new end", [&] { return length() > before + 1; });

        driver_.say("The menu of a stamp, and its labels");
        driver_.activate("timelines");
        services_.timeline.selectLine((*services_.timeline.lines)[1]->id);
        QContextMenuEvent menu(QContextMenuEvent::Mouse, canvas->stampArea(1, 1).center().toPoint(),
                               canvas->mapToGlobal(canvas->stampArea(1, 1).center().toPoint()));
        QApplication::sendEvent(canvas, &menu);
        driver_.waitFor("the menu", [] { return QApplication::activePopupWidget() != nullptr; });
        driver_.screen("stamp-menu");
        driver_.key(Qt::Key_Escape);

        driver_.say("In the mode by tag every tag makes its own line");
        driver_.click("fullControlModeTagBased");
        driver_.activate("tagLibrary");
        driver_.key(Qt::Key_N);
        driver_.waitFor("the tag's line", [&] { return services_.timeline.lines->size() == 4; });
        driver_.screen("by-tag");
        driver_.activate("timelines");
        driver_.click("fullControlModeStandard");
        driver_.waitFor("the video to run on",
                        [&] { return *services_.player.status == PlayerStatus::playing; });
        services_.player.pause();
    }

    void exportTheFilm() {
        driver_.say("The timeline becomes a film");
        driver_.choose("fullControlExport", "fullControlButtonExportTimeline");
        driver_.waitFor("the mode sheet",
                        [] { return qobject_cast<QDialog*>(QApplication::activeWindow()); });
        driver_.picture("export-mode", QApplication::activeWindow());
        driver_.key(Qt::Key_Return);  // a film is the default
        driver_.pause(0.4);
        driver_.picture("exporting", driver_.window("timelines"));
        driver_.waitFor(
            "the save panel", [&] { return driver_.isVisible("savePanel"); }, 120);
        film_ = driver_.output() / "film.mp4";
        choosePath("savePanel", film_);
        driver_.waitFor("the film", [&] { return std::filesystem::exists(film_); });
    }

    // A file that is no video costs a text, nothing else.
    void openGarbage() {
        driver_.say("A file that is no video is added and opened");
        const auto garbage = driver_.output() / "not-a-video.mp4";
        std::ofstream(garbage) << std::string(5000, 'x');
        driver_.activate("list");
        driver_.click("addVideoTitle");
        choosePath("openPanel", garbage);
        driver_.control("videosViewFieldTeam1");
        driver_.key(Qt::Key_Return);
        driver_.waitGone("videosViewTitleMatchInfo");
        driver_.control("videosList")->setFocus();
        driver_.key(Qt::Key_End);
        driver_.key(Qt::Key_Return);
        driver_.window("timelines");
        driver_.pause(1);
        driver_.screen("not-a-video");
        driver_.window("timelines")->close();
        driver_.waitFor("the project to close", [&] { return !services_.player.player(); });
        std::filesystem::remove(garbage);
        driver_.pause(0.2);
        driver_.activate("list");
        driver_.key(Qt::Key_Return);
        driver_.waitFor("the question where the video is",
                        [] { return qobject_cast<QDialog*>(QApplication::activeWindow()); });
        driver_.picture("video-unavailable", QApplication::activeWindow());
        driver_.key(Qt::Key_Escape);
    }

    // Every cut of the film begins with the very frame that its stamp begins with.
    void checkTheFilm() {
        const CutPlanInput input{*services_.timeline.lines, *services_.timeline.selectedLineID,
                                 *services_.tagLibrary.merged, services_.player.videoDuration()};
        StandardLog log;
        FfmpegMedia media;
        const auto cuts = getSegmentsForExport(cuts::CurrentTimeline{}, input, log);
        double place = 0;
        for (const auto& cut : cuts) {
            const double start = cut.timeRange.start.seconds();
            const auto expected = media.frame(video_, start);
            const auto shown = media.frame(film_, std::ceil(place * 30 - 1e-6) / 30);
            if (!expected || !shown)
                throw Failure("a frame could not be read");
            const auto want = readFrameNumber(*expected);
            const auto have = readFrameNumber(*shown);
            std::printf("  cut at %7.3f s: frame %d of the video, %d in the film\n", start,
                        want.value_or(-1), have.value_or(-1));
            // The film's frame lies up to one film frame after the cut's start.
            if (!want || !have || *have < *want || *have > *want + 1)
                throw Failure("the film does not show the frame of its cut");
            place += cut.timeRange.duration.seconds();
        }
        const auto info = media.probe(film_);
        if (!info || std::abs(info->duration - place) > 1.0 / 30 + 0.002)
            throw Failure("the film is not as long as its cuts");
        std::printf("  film of %.3f s, its cuts last %.3f s\n", info->duration, place);
    }

    void lookAround() {
        driver_.activate("list");
        driver_.click("dataManagementTitle");
        driver_.waitFor("the data sheet",
                        [] { return qobject_cast<QDialog*>(QApplication::activeWindow()); });
        driver_.picture("data", QApplication::activeWindow());
        driver_.key(Qt::Key_Escape);
    }

    void closeIt() {
        driver_.say("Closing one window of the project closes it whole");
        driver_.window("timelines")->close();
        driver_.waitGone("tagLibrary");
        driver_.waitGone("video");
        driver_.picture("list-again", &application_.listWindow());
    }

    Application& application_;
    const AppServices& services_;
    std::filesystem::path video_;
    std::filesystem::path film_;
    Driver driver_;
};

}  // namespace
}  // namespace tembrix::tour

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s VIDEO OUTPUT\n", argv[0]);
        return 2;
    }
    tembrix::Application::prepare();
    QApplication qt(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tembrix-stat"));
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    tembrix::Application application(tembrix::findResources());
    application.start();
    try {
        tembrix::tour::Tour(application, std::filesystem::absolute(argv[1]),
                            std::filesystem::absolute(argv[2]))
            .run();
    } catch (const tembrix::tour::Failure& failure) {
        std::fprintf(stderr, "The tour ended early: %s\n", failure.what());
        QPixmap screen = QGuiApplication::primaryScreen()->grabWindow(0);
        screen.save(QString::fromLocal8Bit(argv[2]) + QStringLiteral("/failed.png"));
        return 1;
    }
    std::puts("The tour is complete.");
    return 0;
}
