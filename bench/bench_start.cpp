// The time from creating the program to the first painted frame of the list window, with 1,000
// existing videos in the library. The start of Qt is measured separately. Fonts and styles are
// cached after the first start.

#include <QApplication>
#include <QListView>
#include <QPaintEvent>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/uuid.h"

#include "adapters/qt/file_bookmarks.h"
#include "adapters/qt/qt_directories.h"
#include "adapters/sqlite/sqlite_user_defaults.h"
#include "bench_user.h"
#include "core/records/codec.h"
#include "core/records/video_records.h"
#include "core/storage/data_layout.h"
#include "fakes/captured_log.h"
#include "main/application.h"

namespace tembrix {
namespace {

constexpr int videos = 1000;
constexpr int laterStarts = 5;

void fillLibrary(const TempFolder& home) {
    CapturedLog log;
    SqliteUserDefaults defaults(programDataFolder() / layout::defaultsFile, log);
    FileBookmarks bookmarks;
    std::vector<VideosData> list;
    for (int i = 0; i < videos; ++i) {
        const auto file = home.write("films/match " + std::to_string(i) + ".mp4", "film");
        const std::string name = "Home_Guests_" + std::to_string(i);
        list.push_back({*bookmarks.make(file), freshId(), name, i % 7 == 0});
    }
    defaults.setData(layout::videosDataKey, *encode(list));
}

class FirstPaint final : public QObject {
  public:
    bool painted = false;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->parent() &&
            watched->parent()->objectName() == QLatin1String("videosList"))
            painted = true;  // the frame is complete in the next turn of the loop
        return false;
    }
};

// Milliseconds until the list is painted; negative if it is not painted.
double start(const std::filesystem::path& resources) {
    FirstPaint first;
    qApp->installEventFilter(&first);
    const double begin = nowMs();
    Application program(resources);
    program.start();
    while (!first.painted && nowMs() < begin + 20000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    const double taken = nowMs() - begin;
    const auto* list = program.listWindow().findChild<QListView*>(QStringLiteral("videosList"));
    return first.painted && list && list->model()->rowCount() == videos ? taken : -1;
}

}  // namespace
}  // namespace tembrix

int main(int argc, char** argv) {
    using namespace tembrix;
    if (!std::getenv("QT_QPA_PLATFORM") && !std::getenv("DISPLAY"))
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const TempFolder home;
    settleIn(home);
    fillLibrary(home);

    const double begin = nowMs();
    Application::prepare();
    QApplication toolkit(argc, argv);
    toolkit.setQuitOnLastWindowClosed(false);
    const double ready = nowMs() - begin;
    const std::filesystem::path resources = TEMBRIX_RESOURCES;
    const double first = start(resources);
    std::vector<double> later;
    for (int i = 0; i < laterStarts; ++i)
        later.push_back(start(resources));
    std::sort(later.begin(), later.end());
    std::printf("start to the list window, %d videos, ms\n", videos);
    std::printf("%-32s %8.1f\n", "toolkit and first start", ready + first);
    std::printf("%-32s %8.1f\n", "toolkit", ready);
    std::printf("%-32s %8.1f\n", "first start", first);
    std::printf("%-32s %8.1f\n", "later starts, median", later[later.size() / 2]);
    return first < 0 || later.front() < 0 ? 1 : 0;
}
