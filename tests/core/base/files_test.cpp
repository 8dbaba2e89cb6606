#include "base/files.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <iterator>

#include "base/file_url.h"

#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

std::ptrdiff_t entries(const std::filesystem::path& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST(Files, EveryNameComesBackFromItsUrl) {
    EXPECT_EQ(fileUrl("/a b/C# 100%/м?.mp4"), "file:///a%20b/C%23%20100%25/%D0%BC%3F.mp4");
    for (const char* path : {"/a b/C# 100%/м?.mp4", "/not utf-8 \xFF\n", "/"})
        EXPECT_EQ(pathOfFileUrl(fileUrl(path)), std::filesystem::path(path));
    for (const char* other : {"https://a/b", "file://host/a", "/a", "file:///%4", "file:///%zz"})
        EXPECT_FALSE(pathOfFileUrl(other)) << other;
}

TEST(Files, ReplacesWholeAndLeavesNothingBeside) {
    TempFolder folder;
    const auto file = folder.path() / pathFromText("матч 1.json");
    ASSERT_TRUE(replaceFile(file, toBytes("first, and longer")));
    ASSERT_TRUE(replaceFile(file, toBytes("second")));
    EXPECT_EQ(readFile(file).value(), toBytes("second"));
    ASSERT_TRUE(replaceFile(file, {}));
    EXPECT_TRUE(readFile(file).value().empty());
    EXPECT_EQ(entries(folder.path()), 1);
    EXPECT_EQ(pathText(file.filename()), "матч 1.json");
}

TEST(Files, KeepsThePermissionsOfTheOldFileAndAllowsTheLongestName) {
    TempFolder folder;
    const auto file = folder.path() / std::string(255, 'x');
    ASSERT_TRUE(replaceFile(file, toBytes("a")));
    std::filesystem::permissions(file, std::filesystem::perms(0600));
    ASSERT_TRUE(replaceFile(file, toBytes("b")));
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
}

TEST(Files, AFailedReplacementLeavesEverythingAsItWas) {
    TempFolder folder;
    const auto inTheWay = folder.path() / "in the way";
    std::filesystem::create_directories(inTheWay / "full");
    EXPECT_FALSE(replaceFile(inTheWay, toBytes("x")));
    EXPECT_EQ(entries(folder.path()), 1);
    EXPECT_TRUE(std::filesystem::is_directory(inTheWay / "full"));
    const auto missing = replaceFile(folder.path() / "missing" / "file", toBytes("x"));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().domain, "file");
    EXPECT_EQ(missing.error().code, ENOENT);
}

TEST(Files, ReadingReportsWhyItFailed) {
    TempFolder folder;
    EXPECT_EQ(readFile(folder.path() / "missing").error().code, ENOENT);
    EXPECT_EQ(readFile(folder.path()).error().code, EISDIR);
    EXPECT_FALSE(readFile("/proc/self/stat").value().empty());  // of unknown size
}

TEST(Files, AFolderIsMadeWithItsParentsAndFailsUnderAFile) {
    TempFolder folder;
    EXPECT_TRUE(makeFolder(folder.path() / "a" / "b"));
    EXPECT_TRUE(makeFolder(folder.path() / "a" / "b"));
    folder.write("file", "");
    EXPECT_FALSE(makeFolder(folder.path() / "file" / "b"));
    EXPECT_FALSE(makeFolder(folder.path() / "file"));
}

}  // namespace
}  // namespace tembrix
