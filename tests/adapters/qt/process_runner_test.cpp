#include <gtest/gtest.h>

#include "adapters/qt/event_loop.h"
#include "adapters/qt/qt_process_runner.h"
#include "adapters/qt/qt_scheduler.h"

namespace tembrix {
namespace {

TEST(QtProcessRunner, CollectsBothStreamsInOrderAndTheStatus) {
    QtProcessRunner runner;
    const auto outcome = runner.run(
        "/bin/sh", {"-c", "echo one; echo \"$1\" >&2; cat; exit 3", "sh", "два «слова»"});
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->output, "one\nдва «слова»\n");
    EXPECT_EQ(outcome->exitStatus, 3);
}

TEST(QtProcessRunner, ReportsAMissingProgram) {
    QtProcessRunner runner;
    const auto outcome = runner.run("/nowhere/программа", {});
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().domain, "process");
    EXPECT_NE(outcome.error().text.find("программа"), std::string::npos);
}

TEST(QtProcessRunner, AKilledProgramIsNoSuccess) {
    const auto outcome = QtProcessRunner().run("/bin/sh", {"-c", "kill -9 $$"});
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->exitStatus, 128 + 9);
}

TEST(QtProcessRunner, WorksOffTheMainThreadWithMuchOutput) {
    QtScheduler scheduler;
    std::size_t size = 0;
    scheduler.background(Priority::userInitiated, [&] {
        const auto outcome = QtProcessRunner().run("sh", {"-c", "yes | head -c 2000000"});
        scheduler.onMain([&, count = outcome ? outcome->output.size() : 1] { size = count; });
    });
    EXPECT_TRUE(runUntil([&] { return size != 0; }, 20000));
    EXPECT_EQ(size, 2000000U);
}

}  // namespace
}  // namespace tembrix
