#include "core/shell/windows_manager.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

#include "core/storage/data_layout.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

// Windows without widgets; the test closes them.
class FakeWindows final : public WindowFactory {
  public:
    struct Window {
        WindowKind kind;
        Callbacks callbacks;
        std::string title;
        Rect frame;
        bool detached = false;
    };

    std::unique_ptr<ProjectWindow> make(const WindowRow& row, const std::string& title,
                                        Callbacks callbacks) override {
        const WindowKind kind = row.kind;
        auto window = std::make_shared<Window>(Window{kind, std::move(callbacks), title, {}});
        open[kind] = window;
        made.push_back(kind);
        return std::make_unique<Handle>(*this, window);
    }
    void nameProject(const std::string& name) override { projectName = name; }
    std::optional<Rect> mainScreenFrame() const override { return screen; }

    // Closes the window as its close button does. The callbacks may destroy it.
    bool pressClose(WindowKind kind) {
        const auto window = open.at(kind);
        if (!window->callbacks.shouldClose())
            return false;
        window->callbacks.willClose();
        return true;
    }

    std::string projectName;
    std::optional<Rect> screen = Rect{0, 0, 1500, 1000};
    std::map<WindowKind, std::shared_ptr<Window>> open;
    std::vector<WindowKind> made;
    std::vector<WindowKind> shown;

  private:
    struct Handle final : ProjectWindow {
        Handle(FakeWindows& o, std::shared_ptr<Window> w) : owner(o), window(std::move(w)) {}
        ~Handle() override { owner.open.erase(window->kind); }
        void setTitle(const std::string& title) override { window->title = title; }
        void setFirstFrame(const Rect& frame) override { window->frame = frame; }
        void show() override { owner.shown.push_back(window->kind); }
        void detach() override { window->detached = true; }
        FakeWindows& owner;
        std::shared_ptr<Window> window;
    };
};

struct WindowsManagerTest : testing::Test {
    FakeWindows fake;
    CoreProgram project{fake};
    WindowsManager& windows = project.core.windows;
    Project& open() { return *windows.project(); }
};

TEST_F(WindowsManagerTest, OpensThreeWindowsInTheStatedProportionsAndOrder) {
    const auto id = project.addVideo();
    for (const char* key : {layout::editingLineKey, layout::editingStampKey})
        project.defaults.setText(key, "left over");
    windows.openProject(id);

    const std::vector order{WindowKind::video, WindowKind::control, WindowKind::tagLibrary};
    EXPECT_EQ(fake.made, order);
    EXPECT_EQ(fake.shown, order);
    for (const auto& [kind, window] : fake.open)
        EXPECT_TRUE(window->title.ends_with(" — match.mp4")) << window->title;
    EXPECT_EQ(fake.open.at(WindowKind::control)->frame, (Rect{0, 600, 1500, 400}));
    EXPECT_EQ(fake.open.at(WindowKind::tagLibrary)->frame, (Rect{0, 40, 500, 560}));
    EXPECT_EQ(fake.open.at(WindowKind::video)->frame, (Rect{500, 40, 1000, 560}));
    for (const char* key : {layout::editingLineKey, layout::editingStampKey})
        EXPECT_EQ(project.defaults.text(key), "");
    EXPECT_EQ(project.players.player()->status(), PlayerStatus::playing);
    ASSERT_FALSE(open().timeline.lines->empty());
    EXPECT_EQ(open().timeline.lines->front()->id, drawingsLineId());
    EXPECT_FALSE(open().hotkeys.registeredHotkeys().empty());
}

TEST_F(WindowsManagerTest, TheWindowsOfAProjectNameTheMatch) {
    const auto id = project.addVideo("final.mp4");
    project.library.setUpdateFiles([&](const auto&) { windows.libraryChanged(); });
    windows.openProject(id);
    windows.open(WindowKind::settings);
    const auto title = [&](WindowKind kind) { return fake.open.at(kind)->title; };
    const std::string name = project.library.title(project.library.files().front()).name;
    EXPECT_EQ(title(WindowKind::control), "timelines — " + name);
    EXPECT_EQ(title(WindowKind::settings), "settings");
    EXPECT_EQ(fake.projectName, name);

    project.library.renameVideo(project.library.files().front(), "Cup final");
    EXPECT_EQ(title(WindowKind::video), "video — Cup final");
    EXPECT_EQ(fake.projectName, "Cup final");
    project.texts.set("tagLibrary", "Tags");
    windows.retitle();
    EXPECT_EQ(title(WindowKind::tagLibrary), "Tags — Cup final");
}

TEST_F(WindowsManagerTest, RefusesASecondProjectAndAMissingVideo) {
    const auto first = project.addVideo("first.mp4");
    const auto second = project.addVideo("second.mp4");
    windows.openProject("UNKNOWN");
    EXPECT_TRUE(windows.isClosing());
    windows.openProject(first);
    windows.openProject(second);
    EXPECT_EQ(fake.made.size(), 3U);
    EXPECT_EQ(project.players.opened.size(), 1U);
    EXPECT_EQ(windows.currentVideoId(), second);
}

TEST_F(WindowsManagerTest, ClosingAnyOfTheThreeClosesTheProjectAndANewOneOpens) {
    const auto id = project.addVideo();
    for (const auto kind : {WindowKind::video, WindowKind::control, WindowKind::tagLibrary}) {
        bool viewerStopped = false;
        const auto stopped = project.events.observe<events::StopViewerPlayer>(
            [&](const auto&) { viewerStopped = true; });
        windows.openProject(id);
        ASSERT_FALSE(windows.isClosing());
        ASSERT_FALSE(open().hotkeys.registeredHotkeys().empty());
        EXPECT_TRUE(fake.pressClose(kind));
        EXPECT_TRUE(fake.open.empty());
        EXPECT_TRUE(windows.isClosing());
        EXPECT_TRUE(viewerStopped);
        EXPECT_FALSE(project.players.player());
        EXPECT_FALSE(windows.isProjectWindowActive());
    }
}

TEST_F(WindowsManagerTest, TheEndOfTheProgramClosesAnOpenProject) {
    FakeWindows others;
    auto program = std::make_unique<CoreProgram>(others);
    program->core.windows.openProject(program->addVideo());
    const auto window = others.open.at(WindowKind::control);
    bool viewerStopped = false;
    auto stopped = program->events.observe<events::StopViewerPlayer>(
        [&](const auto&) { viewerStopped = true; });
    program.reset();
    EXPECT_TRUE(viewerStopped);
    EXPECT_TRUE(window->detached) << "a window must not call a destroyed manager";
    EXPECT_TRUE(others.open.empty());
}

TEST_F(WindowsManagerTest, TheVideoWindowEndsTheDrawingEditorFirst) {
    windows.openProject(project.addVideo());
    open().player.isVideoPlayerInEditorMode = true;
    std::optional<bool> editor;
    const auto mode = project.events.observe<events::EditorModeChanged>(
        [&](const events::EditorModeChanged& event) { editor = event.active; });
    EXPECT_FALSE(fake.pressClose(WindowKind::video));
    EXPECT_EQ(editor, false);
    EXPECT_FALSE(windows.isClosing());
    open().player.isVideoPlayerInEditorMode = false;
    EXPECT_TRUE(fake.pressClose(WindowKind::video));
    EXPECT_TRUE(windows.isClosing());
}

TEST_F(WindowsManagerTest, AProjectWhoseEntryIsBoundToAnotherFileOpensAgainOnThatFile) {
    const auto id = project.addVideo();
    const auto other = project.addVideo("other.mp4");
    project.library.setUpdateFiles([&](const auto&) { windows.libraryChanged(); });
    windows.openProject(id);
    open().timeline.addLine("Marked on the old file");
    windows.openProject(other);  // rejected; the id of the open project is still the first one
    project.library.toggleFavorite(id);
    EXPECT_FALSE(windows.isClosing()) << "the same file";

    const auto moved = project.folder.write("moved.mp4", "bytes");
    ASSERT_TRUE(project.library.rebindVideo(id, moved));
    EXPECT_TRUE(windows.isClosing()) << "nothing can be marked on the old film any more";
    EXPECT_TRUE(fake.open.empty());
    project.scheduler.run();
    ASSERT_FALSE(windows.isClosing());
    EXPECT_EQ(open().videoId(), id);
    EXPECT_EQ(open().player.currentVideoURL(), moved);
    open().timeline.addLine("Marked on the new file");
    EXPECT_EQ(project.storage.loadTimeline(id).size(), 3U);
}

TEST_F(WindowsManagerTest, AnEarlierStateThatIsBroughtBackIsNotUndoneByTheOpenProject) {
    const auto id = project.addVideo();
    const auto lineCount = [&] { return project.storage.loadTimeline(id).size(); };
    windows.openProject(id);
    (void)project.core.dataSync.backUpNow();
    open().timeline.addLine("Worth a season");
    (void)project.core.dataSync.restoreFromBackup();
    project.scheduler.run();
    const auto bringBack = [&] {
        project.scheduler.advance(5);  // a state is named by its second
        project.scheduler.background(Priority::utility, [&] {
            auto& sync = project.core.dataSync;
            (void)sync.bringBack(sync.replacedStates().front().name);
        });
        project.scheduler.advance(5);
    };
    open().timeline.deleteLine(open().timeline.lines->back()->id);
    ASSERT_EQ(lineCount(), 1U);
    const auto other = project.addVideo("other.mp4");
    bringBack();
    EXPECT_EQ(lineCount(), 2U);
    EXPECT_TRUE(windows.isClosing());

    // The timelines of another project are not in that state, and it stays open.
    windows.openProject(other);
    bringBack();
    EXPECT_EQ(lineCount(), 1U) << "what was replaced, given back";
    EXPECT_FALSE(windows.isClosing());
}

TEST_F(WindowsManagerTest, AProjectClosesWithItsEntry) {
    const auto id = project.addVideo();
    project.addVideo("other.mp4");
    project.library.setUpdateFiles([&](const auto&) { windows.libraryChanged(); });
    windows.openProject(id);
    ASSERT_TRUE(project.library.deleteVideo(project.library.files().back()));
    EXPECT_FALSE(windows.isClosing());
    ASSERT_TRUE(project.library.deleteVideo(project.library.files().front()));
    EXPECT_TRUE(windows.isClosing());
    EXPECT_TRUE(fake.open.empty());
}

TEST_F(WindowsManagerTest, FollowsWhichWindowHasTheKeyboard) {
    windows.openProject(project.addVideo());
    const auto say = [&](WindowKind kind, KeyState state) {
        fake.open.at(kind)->callbacks.keyChanged(state);
    };
    say(WindowKind::video, KeyState::window);
    EXPECT_TRUE(windows.isProjectWindowActive());
    EXPECT_FALSE(windows.isControlOrLibraryKey());
    say(WindowKind::video, KeyState::none);
    EXPECT_FALSE(windows.isProjectWindowActive());
    say(WindowKind::tagLibrary, KeyState::window);
    EXPECT_TRUE(windows.isControlOrLibraryKey());
    say(WindowKind::tagLibrary, KeyState::sheet);
    EXPECT_FALSE(windows.isProjectWindowActive());
    const auto choice = open().hotkeys.beginLabelChoice({});
    EXPECT_FALSE(windows.isProjectWindowActive()) << "a panel keeps its keys";
    // Label keys work, the space key is the sheet's.
    say(WindowKind::tagLibrary, KeyState::labelSheet);
    EXPECT_TRUE(windows.isProjectWindowActive());
    EXPECT_FALSE(windows.isControlOrLibraryKey());
    open().hotkeys.endLabelChoice(choice);
    EXPECT_FALSE(windows.isProjectWindowActive());
}

TEST_F(WindowsManagerTest, NothingOfAClosedProjectReachesTheNext) {
    const auto id = project.addVideo();
    windows.openProject(id);
    const KeyPress press{45, {}, "n"};
    fake.open.at(WindowKind::tagLibrary)->callbacks.keyChanged(KeyState::window);
    ASSERT_TRUE(open().hotkeys.handleKeyDown(press));  // has an effect two turns later
    project.events.post(events::AddLineSheetAppeared{});
    project.events.post(events::EditorModeChanged{true});
    open().player.setPlaybackSpeed(2);
    fake.pressClose(WindowKind::video);

    windows.openProject(id);
    int marks = 0;
    const auto marked =
        project.events.observe<events::ShowLabelSheet>([&](const auto&) { ++marks; });
    project.scheduler.run();
    EXPECT_EQ(marks, 0);
    EXPECT_EQ(open().player.playbackSpeed(), 1);
    EXPECT_FALSE(*open().history.canUndo);
    fake.open.at(WindowKind::tagLibrary)->callbacks.keyChanged(KeyState::window);
    EXPECT_TRUE(open().hotkeys.handleKeyDown(press));
    project.scheduler.run();
    EXPECT_EQ(marks, 1);
}

}  // namespace
}  // namespace tembrix
