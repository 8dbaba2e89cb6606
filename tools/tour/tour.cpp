// The demo tour: from an empty library to a film, through the real windows, by keyboard where
// possible.
//
//     demo_tour VIDEO OUTPUT

#include <QApplication>
#include <QPixmap>
#include <QScreen>
#include <cstdio>

#include "tour/stage.h"

int main(int argc, char** argv) {
    using namespace tembrix;
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s VIDEO OUTPUT\n", argv[0]);
        return 2;
    }
    Application::prepare();
    QApplication qt(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tembrix-stat"));
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    const auto output = std::filesystem::absolute(argv[2]);
    try {
        tour::Stage stage(std::filesystem::absolute(argv[1]), output);
        try {
            for (const auto chapter :
                 {tour::addTheVideo, tour::mark, tour::edit, tour::arrangeLines, tour::lookCloser,
                  tour::useOwnCollection, tour::exportTheFilm, tour::keepTheLibrary,
                  tour::openGarbage, tour::loseTheData})
                chapter(stage);
        } catch (const tour::Failure&) {
            const QPixmap screen = QGuiApplication::primaryScreen()->grabWindow(0);
            screen.save(QString::fromStdString((output / "failed.png").string()));
            throw;
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "The tour ended early: %s\n", failure.what());
        return 1;
    }
    std::puts("The tour is complete.");
    return 0;
}
