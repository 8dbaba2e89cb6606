#include <chrono>
#include <gtest/gtest.h>
#include <string>

#include "adapters/qt/file_bookmarks.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct FakeKit {
    FakeBookmarks bookmarks;
    fs::path create(const std::string& name) {
        const fs::path file = "/videos/" + name;
        bookmarks.add(file);
        return file;
    }
    void rename(const fs::path& from, const fs::path& to) { bookmarks.rename(from, to); }
    void remove(const fs::path& file) { bookmarks.remove(file); }
};

struct FileKit {
    TempFolder folder;
    FileBookmarks bookmarks;
    fs::path create(const std::string& name) { return folder.write(name, "video " + name); }
    void rename(const fs::path& from, const fs::path& to) { fs::rename(from, to); }
    void remove(const fs::path& file) { fs::remove(file); }
};

template <class Kit>
class BookmarksContract : public testing::Test {
  protected:
    Kit kit;
    const Bookmarks& bookmarks = kit.bookmarks;
};
using Kits = testing::Types<FakeKit, FileKit>;
TYPED_TEST_SUITE(BookmarksContract, Kits);

TYPED_TEST(BookmarksContract, LeadBackToTheFileWhateverItsName) {
    for (const std::string name :
         {"match.mp4", "Матч №1 «Зенит».mp4", "a b\nc.mp4", "\xC3\x28 latin.mp4"}) {
        const auto file = this->kit.create(name);
        const auto bookmark = this->bookmarks.make(file);
        ASSERT_TRUE(bookmark);
        EXPECT_EQ(this->bookmarks.make(file), bookmark);
        const auto resolved = this->bookmarks.resolve(*bookmark);
        ASSERT_TRUE(resolved);
        EXPECT_EQ(resolved->path, file);
        EXPECT_FALSE(resolved->stale);
    }
    EXPECT_NE(this->bookmarks.make(this->kit.create("a.mp4")),
              this->bookmarks.make(this->kit.create("b.mp4")));
}

TYPED_TEST(BookmarksContract, FollowRenamesInTheFolder) {
    const auto file = this->kit.create("первый.mp4");
    this->kit.create("another.mp4");
    const auto bookmark = this->bookmarks.make(file).value();
    const auto second = file.parent_path() / "второй.mp4";
    const auto third = file.parent_path() / "third.mp4";
    this->kit.rename(file, second);
    this->kit.rename(second, third);
    const auto resolved = this->bookmarks.resolve(bookmark);
    ASSERT_TRUE(resolved);
    EXPECT_EQ(resolved->path, third);
    EXPECT_TRUE(resolved->stale);
    this->kit.rename(third, file);
    EXPECT_FALSE(this->bookmarks.resolve(bookmark)->stale);
    EXPECT_EQ(this->bookmarks.make(file), bookmark);
}

TYPED_TEST(BookmarksContract, LeadToAnotherFileOfTheNameOnlyWithoutTheirOwn) {
    const auto file = this->kit.create("recording.mp4");
    const auto bookmark = this->bookmarks.make(file).value();
    const auto renamed = file.parent_path() / "game1.mp4";
    this->kit.rename(file, renamed);
    this->kit.create("recording.mp4");
    const auto next = this->bookmarks.make(file).value();
    EXPECT_NE(next, bookmark);
    EXPECT_FALSE(this->bookmarks.areOfOneFile(next, bookmark));
    EXPECT_EQ(this->bookmarks.resolve(next)->path, file);
    const auto found = this->bookmarks.resolve(bookmark);
    EXPECT_EQ(found->path, renamed);
    EXPECT_TRUE(found->stale);
    EXPECT_FALSE(found->replaced);
    EXPECT_TRUE(this->bookmarks.areOfOneFile(*this->bookmarks.make(renamed), bookmark));

    this->kit.remove(renamed);
    EXPECT_EQ(this->bookmarks.resolve(bookmark)->path, file);
    EXPECT_TRUE(this->bookmarks.resolve(bookmark)->replaced);
    EXPECT_FALSE(this->bookmarks.resolve(next)->replaced);
}

TYPED_TEST(BookmarksContract, AreAbsentWithoutAFileOrWithoutSense) {
    const auto file = this->kit.create("gone.mp4");
    const auto bookmark = this->bookmarks.make(file).value();
    this->kit.remove(file);
    EXPECT_FALSE(this->bookmarks.resolve(bookmark));
    EXPECT_FALSE(this->bookmarks.make(file));
    for (const std::string text : {"", "TSB1", "TSB1 1 2", "TSB1 x 2\n/tmp", "TSB1 1 2\n", "\xFF"})
        EXPECT_FALSE(this->bookmarks.resolve(toBytes(text)));
}

class FileBookmarksTest : public testing::Test {
  protected:
    TempFolder folder;
    FileBookmarks bookmarks;
};

TEST_F(FileBookmarksTest, ANewFileIsNotMistakenForADeletedOne) {
    // File systems reuse the inode numbers of deleted files.
    for (int i = 0; i < 20; ++i) {
        const auto file = folder.write("deleted.mp4", "old");
        const auto bookmark = bookmarks.make(file).value();
        fs::remove(file);
        const auto next = folder.write("new.mp4", "new");
        EXPECT_FALSE(bookmarks.resolve(bookmark));
        fs::remove(next);
    }
}

TEST_F(FileBookmarksTest, AFileMovedOutOfItsFolderIsNotFound) {
    const auto file = folder.write("a/video.mp4", "1");
    fs::create_directory(folder.path() / "b");
    const auto bookmark = bookmarks.make(file).value();
    fs::rename(file, folder.path() / "b" / "video.mp4");
    EXPECT_FALSE(bookmarks.resolve(bookmark));
    fs::remove_all(folder.path() / "a");
    EXPECT_FALSE(bookmarks.resolve(bookmark));
}

TEST_F(FileBookmarksTest, TheSameFileGivesTheSameBytesByAnySpellingOfItsPath) {
    const auto file = folder.write("a/video.mp4", "1");
    const auto bookmark = bookmarks.make(file);
    EXPECT_EQ(bookmarks.make(folder.path() / "a" / ".." / "a" / "." / "video.mp4"), bookmark);
    EXPECT_TRUE(bookmarks.resolve(*bookmarks.make(folder.path() / "a")));  // folders as well
    EXPECT_FALSE(bookmarks.make({}));
    // Writing to a file does not change its identity.
    folder.write("a/video.mp4", "longer content");
    EXPECT_EQ(bookmarks.make(file), bookmark);
}

TEST_F(FileBookmarksTest, ALargeFolderIsSearchedQuickly) {
    for (int i = 0; i < 2000; ++i)
        folder.write(std::to_string(i) + ".mp4", "");
    const auto file = folder.write("x.mp4", "1");
    const auto bookmark = bookmarks.make(file).value();
    fs::rename(file, folder.path() / "y.mp4");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(bookmarks.resolve(bookmark));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
}

}  // namespace
}  // namespace tembrix
