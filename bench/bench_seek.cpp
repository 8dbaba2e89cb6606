// The duration of an exact seek in a 1080p video with a key frame every two seconds, compared to
// the mpv program, which is controlled through its socket with the same options, window size and
// times. Both seek alternately, so that other load affects both. The last row measures until the
// window shows the picture, which the mpv program does not report.
//
// bench_seek [video [seeks]]

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "adapters/mpv/mpv_player_factory.h"
#include "fixtures/match_video.h"

namespace tembrix {
namespace {

constexpr QSize window{1280, 720};
constexpr int restMs = 150;  // between seeks, until painting has ended

double now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(time).count();
}

void rest(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

// The mpv program with the video, paused.
class Program {
  public:
    explicit Program(const std::filesystem::path& video) {
        const QString address = folder_.filePath("socket");
        process_.setStandardErrorFile(QProcess::nullDevice());
        process_.start("mpv", {"--no-config",
                               "--input-ipc-server=" + address,
                               "--pause",
                               "--keep-open=yes",
                               "--hr-seek=yes",
                               "--hwdec=auto-safe",
                               "--load-scripts=no",
                               "--osc=no",
                               "--osd-level=0",
                               "--sid=no",
                               "--audio-display=no",
                               "--ao=pipewire,pulse,alsa,",
                               "--audio-fallback-to-null=yes",
                               "--vo=gpu",
                               "--gpu-sw=yes",
                               "--demuxer-max-bytes=32MiB",
                               "--demuxer-max-back-bytes=8MiB",
                               QString("--geometry=%1x%2").arg(window.width()).arg(window.height()),
                               "--really-quiet",
                               QString::fromStdString(video.string())});
        for (int i = 0; i < 100 && socket_.state() != QLocalSocket::ConnectedState; ++i) {
            rest(50);
            socket_.connectToServer(address);
        }
        rest(2000);  // until its window is shown
        seek(0);
    }
    ~Program() {
        process_.terminate();
        process_.waitForFinished(2000);
    }

    bool seek(double seconds) {
        socket_.readAll();
        socket_.write(
            fmt::format("{{\"command\":[\"seek\",{:.6f},\"absolute+exact\"]}}\n", seconds).c_str());
        QByteArray said;
        while (socket_.waitForReadyRead(10000)) {
            said += socket_.readAll();
            if (said.contains("\"playback-restart\""))
                return true;
        }
        return false;
    }

  private:
    QTemporaryDir folder_;
    QProcess process_;
    QLocalSocket socket_;
};

// Records when a window was painted: in the turn of the event loop after its paint event.
class PaintWatch final : public QObject {
  public:
    PaintWatch(QWidget& surface, double& painted) : painted_(painted) {
        surface.installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            QTimer::singleShot(0, this, [this] { painted_ = now(); });
        return false;
    }

  private:
    double& painted_;
};

void print(const char* what, std::vector<double> times, double base) {
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2];
    fmt::print("{:<34} {:>7.1f} ms {:>7.1f} ms   {:.2f}\n", what, median,
               times[times.size() * 95 / 100], median / base);
}

int run(const std::filesystem::path& video, int seeks) {
    FfmpegMedia media;
    MpvPlayerFactory factory(media);
    const std::unique_ptr<QWidget> surface(factory.makeSurface(nullptr));
    surface->resize(window);
    surface->show();
    const auto player = factory.open(video);
    double painted = 0;
    PaintWatch watch(*surface, painted);

    double ended = 0;
    const auto seek = [&](double seconds) {
        QEventLoop loop;
        ended = 0;
        player->seek(seconds, [&](bool finished) {
            ended = finished ? now() : 0;
            loop.quit();
        });
        QTimer::singleShot(10000, &loop, &QEventLoop::quit);
        loop.exec();
        return ended > 0;
    };
    Program program(video);
    if (!seek(0) || !program.seek(0)) {
        fmt::print(stderr, "No seek has ended: is there a display, and the mpv program?\n");
        return 1;
    }

    std::mt19937 random(1);
    std::uniform_real_distribution<double> anyTime(0, player->duration() - 0.1);
    std::vector<double> ours, shown, theirs;
    for (int i = 0; i < seeks; ++i) {
        const double time = anyTime(random);
        double start = now();
        if (!seek(time))
            return 1;
        ours.push_back(ended - start);
        rest(restMs);
        shown.push_back(painted - start);
        start = now();
        if (!program.seek(time))
            return 1;
        theirs.push_back(now() - start);
        rest(restMs);
    }
    std::vector<double> sorted = theirs;
    std::sort(sorted.begin(), sorted.end());
    const double base = sorted[sorted.size() / 2];
    fmt::print("{:<34} {:>10} {:>10}   ratio\n", "Exact seek, 1080p", "median", "95 %");
    print("mpv program", theirs, base);
    print("Tembrix Stat", ours, base);
    print("Tembrix Stat, until on the screen", shown, base);
    return 0;
}

// One minute of the match at 1080p with a key frame every two seconds; created once.
std::filesystem::path benchVideo() {
    const std::filesystem::path file = TEMBRIX_BENCH_VIDEO;
    if (std::filesystem::exists(file))
        return file;
    MatchVideo video;
    video.width = 1920;
    video.height = 1080;
    video.seconds = 60;
    const auto part =
        std::filesystem::path(file).replace_filename("part-" + file.filename().string());
    if (auto made = makeMatchVideo(video, part); !made) {
        fmt::print(stderr, "{}\n", made.error().text);
        std::exit(1);
    }
    std::filesystem::rename(part, file);
    return file;
}

}  // namespace
}  // namespace tembrix

int main(int argc, char** argv) {
    const std::filesystem::path video = argc > 1 ? argv[1] : tembrix::benchVideo();
    tembrix::MpvPlayerFactory::prepareApplication();
    QApplication application(argc, argv);
    return tembrix::run(video, argc > 2 ? std::atoi(argv[2]) : 100);
}
