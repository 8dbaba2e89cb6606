// The control window in common sizes and in both languages: no text is cut off.

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>
#include <random>

#include "app/control/control_toolbar.h"
#include "app/control/control_window_fixture.h"
#include "app/control/full_control_view.h"
#include "app/control/line_names_view.h"
#include "app/control/timeline_canvas.h"
#include "app/window_tests.h"

namespace tembrix {
namespace {

// Lines with stamps of mixed lengths, distributed evenly.
TimelineLines matchLines(std::size_t lineCount, std::size_t stampCount, double duration) {
    const char* colors[] = {"30D158", "0A84FF", "FF9F0A", "BF5AF2", "FFD60A", "64D2FF", "8E8E93"};
    std::mt19937 random(7);
    std::uniform_real_distribution<double> at(0, duration - 20);
    std::uniform_real_distribution<double> length(1, 15);
    TimelineLines lines;
    for (std::size_t i = 0; i < lineCount; ++i) {
        TimelineLine line{Uuid::random(), "Передача вперёд " + std::to_string(i + 1), {}, {}};
        for (std::size_t k = i; k < stampCount; k += lineCount) {
            const double start = at(random);
            line.stamps.push_back(ControlProject::makeStamp(start, start + length(random), "Пас",
                                                            colors[i % std::size(colors)]));
        }
        lines.push_back(line);
    }
    return lines;
}

class ControlWindowLookTest : public testing::TestWithParam<const char*> {};

TEST_P(ControlWindowLookTest, EverythingFitsAtEverySize) {
    for (const std::size_t stamps : {0, 30, 10'000})
        for (const QSize size : {QSize(1280, 300), QSize(1920, 430)}) {
            ControlProject app(GetParam());
            app.players.player()->setDuration(5400);
            if (stamps > 0)
                app.timeline.replaceLines(matchLines(stamps > 100 ? 50 : 6, stamps, 5400));
            app.player.seek(2000);
            FullControlView view(controlServices(app));
            view.resize(size);
            view.show();
            ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
            if (stamps > 0) {
                const auto& row = view.model().rows()[2];
                app.timeline.selectLine(row.line->id);
                app.timeline.selectStamp(row.line->stamps[0]->id);
            }
            app.settle();
            EXPECT_LE(view.findChild<ControlToolbar*>()->minimumSizeHint().width(), size.width());
            EXPECT_EQ(view.width(), size.width());
            for (auto* button : view.findChildren<QAbstractButton*>()) {
                const bool fits = button->width() >= button->minimumSizeHint().width();
                EXPECT_TRUE(!button->isVisible() || fits) << button->objectName().toStdString();
            }
            picture(view,
                    QString("control-%1-%2-%3").arg(GetParam()).arg(size.width()).arg(stamps));
        }
}

INSTANTIATE_TEST_SUITE_P(Languages, ControlWindowLookTest, testing::Values("en", "ru"));

}  // namespace
}  // namespace tembrix
