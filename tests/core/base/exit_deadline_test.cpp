#include "base/exit_deadline.h"

#include <gtest/gtest.h>

namespace tembrix {
namespace {

using namespace std::chrono_literals;

TEST(ExitDeadlineDeathTest, EndsAProcessThatHangsAndNoOther) {
    EXPECT_EXIT(
        {
            const ExitDeadline deadline(10ms);
            for (;;)
                std::this_thread::sleep_for(1h);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            { const ExitDeadline deadline(1h); }
            std::_Exit(3);
        },
        testing::ExitedWithCode(3), "");
}

}  // namespace
}  // namespace tembrix
