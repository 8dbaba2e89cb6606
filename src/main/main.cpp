#include <QApplication>

#include "main/application.h"

int main(int argc, char** argv) {
    tembrix::Application::prepare();
    QApplication qt(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tembrix-stat"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tembrix Stat"));
    QApplication::setDesktopFileName(QStringLiteral("tembrix-stat"));

    tembrix::Application application(tembrix::findResources());
    application.start();
    return QApplication::exec();
}
