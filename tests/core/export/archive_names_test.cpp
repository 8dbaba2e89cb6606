#include "core/export/archive_names.h"

#include <gtest/gtest.h>

#include "base/bytes.h"

#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

// Writes an archive of empty files byte by byte. `large` selects the format for more than 4 GB.
class ArchiveText {
  public:
    explicit ArchiveText(bool large) : large_(large) {}

    void add(const std::string& name) {
        const auto local = text_.size();
        text_ += "PK\3\4" + le(20, 2) + le(2, 2) + std::string(18, '\0') + le(name.size(), 2) +
                 le(0, 2) + name;
        const std::string extra =
            large_ ? le(9, 2) + le(1, 2) + "x" + le(1, 2) + le(16, 2) + le(0, 8) + le(local, 8)
                   : std::string();
        directory_ += "PK\1\2" + le(20, 2) + le(20, 2) + le(2, 2) + std::string(10, '\0') +
                      le(0, 4) + le(large_ ? 0xFFFFFFFF : 0, 4) + le(name.size(), 2) +
                      le(extra.size(), 2) + le(3, 2) + std::string(8, '\0') +
                      le(large_ ? 0xFFFFFFFF : local, 4) + name + extra + "rem";
    }
    std::string finish() const {
        const auto start = text_.size();
        std::string all = text_ + directory_;
        const auto end64 = all.size();
        if (large_)
            all += "PK\6\6" + le(44, 8) + std::string(28, '\0') + le(directory_.size(), 8) +
                   le(start, 8) + "PK\6\7" + le(0, 4) + le(end64, 8) + le(1, 4);
        return all + "PK\5\6" + std::string(8, '\0') +
               le(large_ ? 0xFFFFFFFF : directory_.size(), 4) + le(large_ ? 0xFFFFFFFF : start, 4) +
               le(0, 2);
    }

  private:
    static std::string le(std::uint64_t value, int size) {
        std::string text;
        for (int i = 0; i < size; ++i)
            text += static_cast<char>(value >> (8 * i));
        return text;
    }
    bool large_;
    std::string text_;
    std::string directory_;
};

// The indices at which two texts of the same length differ.
std::vector<std::size_t> differences(const std::string& a, const std::string& b) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i])
            places.push_back(i);
    return places;
}

TEST(ArchiveNames, AreMarkedInBothHeadersAndNothingElseChanges) {
    const TempFolder folder;
    for (const bool large : {false, true}) {
        ArchiveText archive(large);
        archive.add("plain.mp4");
        archive.add("Пас.mp4");
        const auto before = archive.finish();
        const auto file = folder.write("archive.zip", before);
        markArchiveNamesAsUtf8(file);
        const auto after = fileText(file);
        ASSERT_EQ(after.size(), before.size());
        const auto changed = differences(before, after);
        ASSERT_EQ(changed.size(), 2U) << large;
        const auto local = before.rfind("PK\3\4");
        const auto entry = before.rfind("PK\1\2");
        EXPECT_EQ(changed[0], local + 7);
        EXPECT_EQ(changed[1], entry + 9);
        EXPECT_EQ(after[changed[0]], 8);
        EXPECT_EQ(after[changed[1]], 8);
    }
}

TEST(ArchiveNames, OtherFilesAreLeftAlone) {
    const TempFolder folder;
    ArchiveText archive(false);
    archive.add("Пас.mp4");
    const auto whole = archive.finish();
    auto misled = whole;
    misled[whole.rfind("PK\5\6") + 16] = 77;  // a wrong offset of the directory
    for (const auto& text : {std::string(), std::string("not an archive at all, but long enough"),
                             whole.substr(0, whole.size() - 1), whole.substr(9), misled}) {
        const auto file = folder.write("archive.zip", text);
        markArchiveNamesAsUtf8(file);
        EXPECT_EQ(fileText(file), text);
    }
    markArchiveNamesAsUtf8(folder.path() / "none.zip");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "none.zip"));
}

}  // namespace
}  // namespace tembrix
