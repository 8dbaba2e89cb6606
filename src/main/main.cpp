#include <QApplication>

#include "base/log.h"

#include "adapters/qt/one_instance.h"
#include "adapters/qt/qt_directories.h"
#include "main/application.h"

int main(int argc, char** argv) {
    tembrix::Application::prepare();
    const tembrix::InterfaceScale scale;
    QApplication qt(argc, argv);
    scale.restore();
    QApplication::setApplicationName(QStringLiteral("tembrix-stat"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tembrix Stat"));
    QApplication::setDesktopFileName(QStringLiteral("tembrix-stat"));

    tembrix::OneInstance instance(tembrix::programDataFolder());
    if (!instance.begin()) {
        tembrix::StandardLog().line("⚠️ Start: Another instance works on this data already");
        return 0;
    }
    tembrix::Application application(tembrix::findResources());
    application.start();
    instance.setAsked([&application] { application.bringForward(); });
    const int code = QApplication::exec();
    instance.stopAnswering();
    return code;
}
