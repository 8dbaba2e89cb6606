#include "core/export/run_folder.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/files.h"

#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct RunFolders : testing::Test {
    TempFolder temporary;
    fs::path runs = temporary.path() / "exports";

    std::shared_ptr<RunFolder> make() {
        return std::move(RunFolder::make(temporary.path())).value();
    }
};

TEST_F(RunFolders, AreRemovedWithTheirFilesUnlessTheyAreKept) {
    auto first = make();
    const auto second = make();
    EXPECT_NE(first->path(), second->path());
    std::ofstream(first->path() / "film.mp4") << "film";
    first.reset();
    EXPECT_EQ(std::distance(fs::directory_iterator(runs), {}), 2) << "a folder and its lock";

    first = make();
    const auto place = first->path();
    std::ofstream(place / "film.mp4") << "film";
    first->keep();
    first.reset();
    EXPECT_TRUE(fs::exists(place / "film.mp4"));
    removeAbandonedRunFolders(temporary.path());
    EXPECT_FALSE(fs::exists(place));
    EXPECT_TRUE(fs::exists(second->path())) << "its run goes on";
}

TEST_F(RunFolders, OfAKilledProcessAreRemovedButNotThoseOfALivingOne) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t other = fork();
    if (other == 0) {
        const auto folder = make();
        std::ofstream(folder->path() / ".film.part") << "half a film";
        const bool told = write(ready[1], "x", 1) == 1;
        while (told)
            pause();
        _exit(1);
    }
    char told = 0;
    ASSERT_EQ(read(ready[0], &told, 1), 1);
    close(ready[0]);
    close(ready[1]);
    removeAbandonedRunFolders(temporary.path());
    EXPECT_EQ(std::distance(fs::directory_iterator(runs), {}), 2);

    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    removeAbandonedRunFolders(temporary.path());
    EXPECT_TRUE(fs::is_empty(runs));
}

TEST_F(RunFolders, TheCopyThatAKilledProcessWasWritingIsRemovedFromItsTarget) {
    const TempFolder user;
    user.write("film.mp4", "an older film");
    user.write(".new-0123", "a file of the user's");
    temporary.write("big.mp4", std::string(100, 'f'));
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t other = fork();
    if (other == 0) {
        const auto folder = make();
        (void)replaceFileByCopy(
            user.path() / "film.mp4", temporary.path() / "big.mp4",
            [&] {
                const bool told = write(ready[1], "x", 1) == 1;
                while (told)
                    pause();
                return false;
            },
            [&](const fs::path& unfinished) { noteUnfinishedCopy(folder->path(), unfinished); });
        _exit(1);
    }
    char told = 0;
    ASSERT_EQ(read(ready[0], &told, 1), 1);
    close(ready[0]);
    close(ready[1]);
    EXPECT_EQ(std::distance(fs::directory_iterator(user.path()), {}), 3);
    removeAbandonedRunFolders(temporary.path());
    EXPECT_EQ(std::distance(fs::directory_iterator(user.path()), {}), 3) << "it is still running";
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    removeAbandonedRunFolders(temporary.path());
    EXPECT_EQ(std::distance(fs::directory_iterator(user.path()), {}), 2);
    EXPECT_EQ(fileText(user.path() / "film.mp4"), "an older film");
    EXPECT_TRUE(fs::is_empty(runs));
}

TEST_F(RunFolders, OtherFilesAreLeftAlone) {
    removeAbandonedRunFolders(temporary.path());  // before the first export
    EXPECT_TRUE(fs::is_empty(temporary.path()));
    temporary.write("exports/notes.txt", "");
    temporary.write("preview.jpg", "");
    removeAbandonedRunFolders(temporary.path());
    EXPECT_TRUE(fs::exists(runs / "notes.txt"));
    EXPECT_TRUE(fs::exists(temporary.path() / "preview.jpg"));

    const TempFolder other;
    other.write("exports", "a file is in the way");
    EXPECT_FALSE(RunFolder::make(other.path()));
}

}  // namespace
}  // namespace tembrix
