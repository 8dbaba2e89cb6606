// From the empty library to the exported film through the accessible tree alone. On the way, the
// tree of each window and sheet is examined.

#include <QApplication>
#include <QTest>
#include <QWidget>
#include <functional>
#include <gtest/gtest.h>
#include <set>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "app/accessible_tree.h"
#include "core/composition/core_services.h"
#include "fakes/temp_folder.h"
#include "fixtures/match_video.h"
#include "main/application.h"

namespace tembrix {
namespace {

using enum QAccessible::Role;
using tree::Node;

constexpr int patience = 8'000;  // milliseconds

class Road : public testing::Test {
  protected:
    Road() {
        match.seconds = 20;
        const auto made = makeMatchVideo(match, video);
        EXPECT_TRUE(made);
        application.start();
    }

    QString text(const char* key) const {
        return QString::fromStdString(application.core().platform.texts.text(key));
    }
    // What the window manager does when a window appears.
    static void activate(Node window) {
        auto* widget = window ? qobject_cast<QWidget*>(window->object()) : nullptr;
        EXPECT_TRUE(widget && QTest::qWaitFor([widget] {
                        widget->activateWindow();
                        return widget->isActiveWindow();
                    }));
    }
    static Node seek(QAccessible::Role role, const QString& name, Node in) {
        for (Node window : in ? std::vector<Node>{in} : tree::windows())
            if (Node found = tree::find(window, role, name))
                return found;
        return nullptr;
    }
    // Acts as soon as that is offered. The node is sought each time, because a list forgets its
    // rows when they change.
    static void act(const std::function<Node()>& node, const QString& name,
                    const QString& action = {}) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return tree::act(node(), action); }, patience))
            << "offers no action: " << name.toStdString() << "\n"
            << shown();
    }
    Node await(QAccessible::Role role, const QString& name, Node in = nullptr) {
        Node found = nullptr;
        const bool there =
            QTest::qWaitFor([&] { return (found = seek(role, name, in)); }, patience);
        EXPECT_TRUE(there) << "not there: " << name.toStdString() << "\n" << shown();
        examine();
        return found;
    }
    Node awaitWindow(QAccessible::Role role, const QString& name) {
        const Node window = await(role, name);
        activate(window);
        return window;
    }
    // The open sheet or panel.
    Node awaitSheet() {
        Node found = nullptr;
        const bool there = QTest::qWaitFor(
            [&] {
                for (Node window : tree::windows())
                    if (window->role() == Dialog)
                        found = window;
                return found != nullptr;
            },
            patience);
        EXPECT_TRUE(there) << "no sheet\n" << shown();
        activate(found);
        examine();
        return found;
    }
    void awaitNoSheet() {
        EXPECT_TRUE(QTest::qWaitFor(
            [] {
                for (Node window : tree::windows())
                    if (window->role() == Dialog)
                        return false;
                return true;
            },
            patience))
            << shown();
    }
    void press(QAccessible::Role role, const QString& name, Node in = nullptr) {
        act([&] { return seek(role, name, in); }, name);
    }
    void type(const QString& field, const QString& text, Node in) {
        EXPECT_TRUE(tree::type(await(EditableText, field, in), text)) << field.toStdString();
    }
    void chooseFile(const std::filesystem::path& file, const QString& accept) {
        const Node panel = awaitSheet();
        ASSERT_TRUE(panel);
        type("File name:", QString::fromStdString(file.string()), panel);
        press(Button, accept, panel);
        awaitNoSheet();
    }
    // As soon as the entry is enabled.
    void choose(Node window, const char* menu, const char* command) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return tree::choose(window, text(menu), text(command)); },
                                    patience))
            << command;
    }
    // Runs a command from the menus of a window, examines the sheet that it shows and closes that.
    void glance(Node window, const char* menu, const char* command) {
        SCOPED_TRACE(command);
        activate(window);
        choose(window, menu, command);
        const Node sheet = awaitSheet();
        ASSERT_TRUE(sheet);
        qobject_cast<QWidget*>(sheet->object())->close();
        awaitNoSheet();
    }
    void examine() {
        for (Node window : tree::windows()) {
            // Its file panels are the toolkit's.
            if (window->object()->inherits("QFileDialog"))
                continue;
            for (const QString& fault : tree::faults(window))
                faults.insert((tree::name(window) + ": " + fault).toStdString());
        }
    }
    static std::string shown() {
        std::string all;
        for (Node window : tree::windows()) {
            all += "window " + tree::name(window).toStdString() + "\n";
            for (Node node : tree::all(window))
                if (!tree::name(node).isEmpty())
                    all += "  " + std::to_string(node->role()) + " " +
                           tree::name(node).toStdString() + "\n";
        }
        return all;
    }
    void TearDown() override {
        for (const auto& fault : faults)
            ADD_FAILURE() << fault;
    }

    TempFolder folder;
    MatchVideo match;
    std::filesystem::path video = folder.path() / "match.mp4";
    Announcements heard;  // the program tells what changes
    tembrix::Application application{TEMBRIX_RESOURCES};
    std::set<std::string> faults;
};

TEST_F(Road, FromTheEmptyLibraryToTheFilm) {
    const Node list = awaitWindow(Window, "Tembrix Stat");
    ASSERT_TRUE(list);
    press(Button, text("addVideoTitle"), list);
    chooseFile(video, "Open");
    const Node matchSheet = awaitSheet();
    ASSERT_TRUE(matchSheet);
    type(text("videosViewFieldTeam1"), "Lions", matchSheet);
    type(text("videosViewFieldTeam2"), "Foxes", matchSheet);
    press(Button, text("saveButtonTitle"), matchSheet);
    awaitNoSheet();

    const auto card = [&]() -> Node {
        for (Node node : tree::all(list))
            if (node->role() == ListItem && tree::name(node).contains("Lions"))
                return node;
        return nullptr;
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return card() && card()->state().selected; }, patience))
        << shown();
    act(card, "the card");

    const Node control = awaitWindow(Window, text("timelines"));
    const Node panel = awaitWindow(Window, text("tagLibrary"));
    ASSERT_TRUE(control && panel);
    const Node play = await(CheckBox, text("videoControlPlayPause"), control);
    ASSERT_TRUE(play);
    EXPECT_TRUE(QTest::qWaitFor([&] { return bool(play->state().checked); }, patience));

    press(Button, text("fullControlButtonAddTimeline"), control);
    const Node lineSheet = awaitSheet();
    ASSERT_TRUE(lineSheet);
    type(text("timelineName"), "Moments", lineSheet);
    press(Button, text("addTimelineButton"), lineSheet);
    awaitNoSheet();
    const Node line = await(List, "Moments", control);
    ASSERT_TRUE(line);
    EXPECT_TRUE(line->state().selected);
    const Node rows = await(List, text("timelineNames"), control);
    ASSERT_TRUE(rows);
    for (int i = 0; i < rows->childCount(); ++i)
        EXPECT_EQ(bool(rows->child(i)->state().selected),
                  tree::name(rows->child(i)).startsWith("Moments"));

    // A tag without labels, then one with.
    press(Button, "Note", panel);
    EXPECT_TRUE(QTest::qWaitFor([&] { return line->childCount() == 1; }, patience));
    press(Button, "Shot", panel);
    const Node labels = awaitSheet();
    ASSERT_TRUE(labels);
    const Node goal = await(CheckBox, "Goal", labels);
    ASSERT_TRUE(goal);
    EXPECT_EQ(goal->text(QAccessible::Accelerator), "Q");
    EXPECT_TRUE(tree::act(goal, QAccessibleActionInterface::toggleAction()));
    EXPECT_TRUE(goal->state().checked);
    press(Button, text("collectionsButtonAdd"), labels);
    awaitNoSheet();
    ASSERT_TRUE(QTest::qWaitFor([&] { return line->childCount() == 2; }, patience));
    EXPECT_TRUE(tree::name(line->child(1)).startsWith("Shot, "));
    EXPECT_EQ(tree::description(line->child(1)), "Labels: Goal");
    EXPECT_TRUE(tree::description(await(Button, "Shot", panel)).contains("1"));

    // An interval, which tells how long it is open.
    press(CheckBox, "Our possession", panel);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            const Node interval = seek(CheckBox, "Our possession", panel);
            return interval->state().checked && tree::description(interval).contains("open for");
        },
        patience));
    const Node picture = await(Graphic, text("videoPlayerPicture"));
    EXPECT_TRUE(picture);
    press(CheckBox, "End Our possession", panel);
    EXPECT_TRUE(QTest::qWaitFor([&] { return line->childCount() == 3; }, patience));

    press(ButtonMenu, text("fullControlExport"), control);
    press(MenuItem, text("fullControlButtonExportTimeline"), control);
    const Node mode = awaitSheet();
    ASSERT_TRUE(mode);
    press(Button, text("exportModeFilm"), mode);
    await(ProgressBar, text("exportProgress"), control);
    const auto film = folder.path() / "film.mp4";
    chooseFile(film, "Save");
    FfmpegMedia media;
    double length = 0;
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            const auto info = std::filesystem::exists(film)
                                  ? media.probe(film)
                                  : Result<MediaInfo>(Error{"", 0, "not there"});
            length = info ? info->duration : 0;
            return length > 0;
        },
        patience));
    EXPECT_GT(length, 5);
    await(Button, text("savedProductPlay"), control);
    press(Button, text("savedProductHide"), control);

    // The other sheets.
    for (const char* command : {"commandFindCommand", "commandShowKeys"}) {
        glance(control, "menuHelp", command);
        glance(list, "menuHelp", command);
    }
    for (const char* command : {"fullControlButtonExportTags", "fullControlButtonExportLabels",
                                "fullControlButtonExportEvents"})
        glance(control, "menuExport", command);
    EXPECT_TRUE(tree::act(line->child(1), "Select"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return bool(line->child(1)->state().selected); }, patience));
    glance(control, "menuEdit", "timelineButtonEditLabels");
    glance(control, "menuEdit", "timelineButtonEditTimeEvents");
    glance(control, "menuTimelines", "commandRenameLine");
    choose(control, "menuTimelines", "timelineButtonDeleteTimeline");
    press(Button, "Shot", panel);
    const Node message = awaitSheet();
    ASSERT_TRUE(message);
    qobject_cast<QWidget*>(message->object())->close();
    awaitNoSheet();
    for (const char* command :
         {"dataManagementTitle", "commandRenameVideo", "rebindVideo", "commandDeleteVideo"})
        glance(list, "menuFile", command);

    choose(list, "menuFile", "commandSettings");
    const Node settings = awaitWindow(Window, text("settings"));
    ASSERT_TRUE(settings);
    for (const char* page : {"settingsPlayback", "settingsFiles", "settingsKeys"}) {
        press(ListItem, text(page), settings);
        await(StaticText, text(page), settings);
    }
    qobject_cast<QWidget*>(settings->object())->close();

    choose(control, "menuFile", "commandCloseProject");
    ASSERT_TRUE(QTest::qWaitFor([] { return tree::windows().size() == 1; }, patience)) << shown();
    activate(list);
    choose(list, "menuFile", "commandDeleteVideo");
    const Node question = awaitSheet();
    ASSERT_TRUE(question);
    press(Button, text("deleteButtonTitle"), question);
    awaitNoSheet();
    press(Button, text("undoDeletion"), list);
    EXPECT_TRUE(QTest::qWaitFor([&] { return card() != nullptr; }, patience));
}

}  // namespace
}  // namespace tembrix
