#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "base/file_dates.h"

#include "adapters/qt/file_bookmarks.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct FakeKit {
    static constexpr bool hasIdentities = true;
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
    static constexpr bool hasIdentities = true;
    TempFolder folder;
    FileBookmarks bookmarks;
    int created = 0;
    fs::path create(const std::string& name) {
        return folder.write(name, "video " + std::to_string(++created));
    }
    void rename(const fs::path& from, const fs::path& to) { fs::rename(from, to); }
    void remove(const fs::path& file) { fs::remove(file); }
};

FileBookmarks withoutIdentities() {
    return FileBookmarks([](const fs::path&) { return std::nullopt; });
}

// As on the file systems of memory cards.
struct CardKit : FileKit {
    static constexpr bool hasIdentities = false;
    CardKit() { bookmarks = withoutIdentities(); }
};

template <class Kit>
class BookmarksContract : public testing::Test {
  protected:
    Kit kit;
    const Bookmarks& bookmarks = kit.bookmarks;
};
using Kits = testing::Types<FakeKit, FileKit, CardKit>;
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
    EXPECT_EQ(this->bookmarks.areOfOneFile(*this->bookmarks.make(renamed), bookmark),
              TypeParam::hasIdentities);

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
    for (const std::string text : {"", "TSB1", "TSB1 1 2", "TSB1 x 2\n/tmp", "TSB1 1 2\n", "\xFF",
                                   "TSB2 1 2 3 4 5\n/tmp", "TSB2 1 2 3 4 5 6\n"})
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
}

enum class Found { itself, another, nothing };

Found found(const Bookmarks& bookmarks, const Bytes& bookmark) {
    const auto resolved = bookmarks.resolve(bookmark);
    if (!resolved)
        return Found::nothing;
    return resolved->replaced ? Found::another : Found::itself;
}

// What a camera records, larger than the samples of it that are kept.
std::string film(char picture) {
    return std::string(300'000, picture);
}

TEST_F(FileBookmarksTest, AFileThatWasWrittenOverIsAnotherAndOneThatGrowsIsNot) {
    const FileBookmarks onCard = withoutIdentities();
    for (const Bookmarks* kind :
         {static_cast<const Bookmarks*>(&bookmarks), static_cast<const Bookmarks*>(&onCard)}) {
        for (const std::string& start : {std::string("match one"), film('1')}) {
            const auto file = folder.write("recording.mp4", start);
            const auto bookmark = kind->make(file).value();
            std::ofstream(file, std::ios::binary | std::ios::app) << " goes on";
            EXPECT_EQ(found(*kind, bookmark), Found::itself);
            folder.write("recording.mp4", start);  // written anew, with the same content
            EXPECT_EQ(found(*kind, bookmark), Found::itself);
            EXPECT_TRUE(kind->areOfOneFile(bookmark, *kind->make(file)));

            for (const std::string& next :
                 {"match two" + film('2'), film('2'), std::string("short")}) {
                folder.write("recording.mp4", next);
                EXPECT_EQ(found(*kind, bookmark), Found::another);
                EXPECT_FALSE(kind->areOfOneFile(bookmark, *kind->make(file)));
            }
        }
    }
}

TEST_F(FileBookmarksTest, ARecordingIsTheSameFileWhenTheRecorderFinishesIt) {
    const auto file = folder.write("recording.mp4", film('1'));
    const auto bookmark = bookmarks.make(file).value();
    std::fstream recorder(file, std::ios::binary | std::ios::in | std::ios::out);
    recorder.seekp(40) << "length";
    recorder.seekp(0, std::ios::end) << film('i');
    recorder.close();
    EXPECT_EQ(found(bookmarks, bookmark), Found::itself);
}

TEST_F(FileBookmarksTest, ACopyAtThePlaceOfTheFileIsAsGood) {
    const auto file = folder.write("match.mp4", film('1'));
    const auto bookmark = bookmarks.make(file).value();
    fs::copy_file(file, folder.path() / "saved.mp4");
    fs::remove(file);
    fs::rename(folder.path() / "saved.mp4", file);
    EXPECT_EQ(found(bookmarks, bookmark), Found::itself);
}

TEST_F(FileBookmarksTest, ALargeFileThatWasOnlyTouchedIsTheSame) {
    const auto file = folder.write("match.mp4", std::string(2'000'000, '1'));
    for (const FileBookmarks& kind : {bookmarks, withoutIdentities()}) {
        const auto bookmark = kind.make(file).value();
        fs::last_write_time(file, fs::last_write_time(file) + std::chrono::hours(1));
        EXPECT_EQ(found(kind, bookmark), Found::itself);
        EXPECT_TRUE(kind.areOfOneFile(bookmark, *kind.make(file)));
        folder.write("match.mp4", std::string(2'000'000, '2'));
        EXPECT_EQ(found(kind, bookmark), Found::another);
        folder.write("match.mp4", std::string(2'000'000, '1'));
    }
}

TEST_F(FileBookmarksTest, ReadingTheContentDoesNotCountAsAnAccess) {
    const auto file = folder.write("match.mp4", film('1'));
    const timespec times[2]{{1577836800, 0}, {1577836800, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    EXPECT_TRUE(bookmarks.resolve(*bookmarks.make(file)));
    EXPECT_EQ(lastAccessDate(file), Date{1577836800});
}

TEST_F(FileBookmarksTest, BookmarksOfEarlierVersionsAreRead) {
    const auto file = folder.write("match.mp4", "content");
    const auto identity = fileIdentity(file).value();
    const auto old = [&](FileIdentity known) {
        return toBytes("TSB1 " + std::to_string(known.number) + " " +
                       std::to_string(known.birthTime) + "\n" + file.string());
    };
    EXPECT_EQ(found(bookmarks, old(identity)), Found::itself);
    EXPECT_EQ(found(bookmarks, old({})), Found::itself);
    EXPECT_EQ(found(bookmarks, old({identity.number, 1})), Found::another);
    EXPECT_TRUE(bookmarks.areOfOneFile(old(identity), *bookmarks.make(file)));
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
