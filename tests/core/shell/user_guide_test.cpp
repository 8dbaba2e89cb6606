#include "core/shell/user_guide.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/bytes.h"
#include "base/files.h"
#include "base/result.h"

#include "fakes/core_project.h"

namespace tembrix {
namespace {

TEST(UserGuide, ListsTheKeysThatAreInForceInTheLanguageOfTheTexts) {
    CoreProgram program;
    program.locale.language = "ru";
    program.core.commandKeys.setKeys(Command::undo, {"⌘+U"});
    const auto pages = std::filesystem::path(TEMBRIX_RESOURCES) / "guides";
    const auto folder = program.folder.path() / "guide";
    const auto page =
        writeGuide(pages, folder, program.locale, program.core.commands, program.texts);
    EXPECT_EQ(page, folder / "ru.html");
    const auto content = readFile(page);
    ASSERT_TRUE(content);
    const std::string html(asText(*content));
    EXPECT_THAT(html, testing::HasSubstr("<kbd>Ctrl+U</kbd></td><td>fullControlUndo<"));
    EXPECT_THAT(html, testing::HasSubstr("<kbd>Ctrl+Z</kbd></td><td>commandTakeBackDeletion<"));

    const auto blocked = program.folder.write("blocked", "a file");
    EXPECT_EQ(writeGuide(pages, blocked, program.locale, program.core.commands, program.texts),
              pages / "ru.html");
}

}  // namespace
}  // namespace tembrix
