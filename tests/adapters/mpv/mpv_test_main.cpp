// Creates the QApplication for tests of real players.

#include <QApplication>
#include <gtest/gtest.h>

#include "adapters/mpv/mpv_player_factory.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    tembrix::MpvPlayerFactory::prepareApplication();
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
