// Runs the program in a home folder of its own.

#include <QApplication>
#include <gtest/gtest.h>

#include "fakes/temp_folder.h"
#include "main/application.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const tembrix::TempFolder home;
    const auto set = [&](const char* name, const char* folder) {
        qputenv(name, QByteArray::fromStdString((home.path() / folder).string()));
    };
    set("HOME", "");
    set("XDG_DATA_HOME", "data");
    set("XDG_STATE_HOME", "state");
    set("XDG_CACHE_HOME", "cache");
    set("XDG_CONFIG_HOME", "config");
    qputenv("LANGUAGE", "en");
    tembrix::Application::prepare();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tembrix-stat"));
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
