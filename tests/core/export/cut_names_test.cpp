#include <gtest/gtest.h>

#include "core/export/cut_planning.h"
#include "core/export/file_names.h"
#include "fakes/export_records.h"
#include "fakes/fake_texts.h"

namespace tembrix {
namespace {

struct CutNames : testing::Test, MatchRecords {
    FakeTexts texts;
    ExportSegment cut;

    CutNames() {
        texts.set("fullControlFileTimelineFile", "video.mp4");
        texts.set("fullControlFileTimeline", "Timeline");
        texts.set("drawingsTimelineName", "рисунки");
        cut.stamp = stamp("pass", "Пас!", 1, 2, {"long", "nowhere", "exact"});
        cut.tagName = "Пас!";
        cut.lineName = "Team A";
        cut.groupName = "Ball";
        cut.labelGroupName = "Range";
    }
    std::string film(const CutsExportType& type) { return filmFileName(type, {cut, {}}, texts); }
    std::string clip(const CutsExportType& type) {
        return clipFileName(type, cut, 7, library, texts);
    }
    void dropNames() {
        cut.lineName.reset();
        cut.groupName.reset();
        cut.labelGroupName.reset();
    }
};

TEST_F(CutNames, OfFilms) {
    EXPECT_EQ(film(cuts::TagCuts{pass}), "Ball_Пас_video.mp4");
    EXPECT_EQ(film(cuts::TimeEventCuts{half}), "First half_Пас!_video.mp4");
    EXPECT_EQ(film(cuts::LabelCuts{exact}), "Точный_video.mp4");
    EXPECT_EQ(film(cuts::TagWithLabels{pass, {exact, lost}}), "Пас_Точный_Lost_video.mp4");
    EXPECT_EQ(film(cuts::LabelWithTags{exact, {shot, pass}}), "Точный_Shot_Пас_video.mp4");
    EXPECT_EQ(film(cuts::CurrentTimeline{}), "Team A_video.mp4");
    EXPECT_EQ(film(cuts::AllTimelines{}), "Ball_Пас!_video.mp4");
    EXPECT_EQ(film(cuts::DrawingsTimeline{}), "рисунки_Фильм_video.mp4");
    dropNames();
    EXPECT_EQ(film(cuts::TagCuts{pass}), "group_Пас_video.mp4");
    EXPECT_EQ(film(cuts::CurrentTimeline{}), "timeline_video.mp4");
}

TEST_F(CutNames, OfClips) {
    EXPECT_EQ(clip(cuts::TagCuts{pass}), "Ball_Пас_7.mp4");
    EXPECT_EQ(clip(cuts::TimeEventCuts{half}), "First half_Пас!_7.mp4");
    EXPECT_EQ(clip(cuts::LabelCuts{exact}), "Range_Точный_Пас!_7.mp4");
    EXPECT_EQ(clip(cuts::TagWithLabels{pass, {exact}}), "Ball_Пас_Длинный_Точный_7.mp4");
    EXPECT_EQ(clip(cuts::LabelWithTags{exact, {pass}}), "Range_Точный_Пас!_7.mp4");
    EXPECT_EQ(clip(cuts::CurrentTimeline{}), "Team A_Пас!_7.mp4");
    EXPECT_EQ(clip(cuts::AllTimelines{}), "Team A_Ball_Пас!_7.mp4");
    EXPECT_EQ(clip(cuts::DrawingsTimeline{}), "рисунки_Пас!_7.mp4");
    dropNames();
    EXPECT_EQ(clip(cuts::LabelCuts{exact}), "Labels_Точный_Пас!_7.mp4");
    EXPECT_EQ(clip(cuts::AllTimelines{}), "Timeline_group_Пас!_7.mp4");
}

TEST_F(CutNames, KeepTheirEndingsWhereTheyAreTooLong) {
    cut.lineName = "../Left/Right\n";
    EXPECT_EQ(clip(cuts::CurrentTimeline{}), "..-Left-Right-_Пас!_7.mp4");
    EXPECT_EQ(film(cuts::CurrentTimeline{}), "..-Left-Right-_video.mp4");

    cut.lineName = "x";
    for (int i = 0; i < 300; ++i)
        *cut.lineName += "й";  // two bytes each
    const auto name = clip(cuts::CurrentTimeline{});
    EXPECT_LE(name.size(), 255U);
    EXPECT_TRUE(name.ends_with("й_7.mp4")) << name;
    EXPECT_TRUE(film(cuts::CurrentTimeline{}).ends_with("й_video.mp4"));
}

TEST_F(CutNames, AreGoodForTheFileSystemsOfWindows) {
    cut.lineName = "1:0? *\"goal\" <a|b>\\\t";
    EXPECT_EQ(film(cuts::CurrentTimeline{}), "1-0- --goal- -a-b---_video.mp4");
    cut.lineName = "CON";
    EXPECT_EQ(film(cuts::CurrentTimeline{}), "CON_video.mp4") << "no device";
    cut.lineName = "Con. ";
    EXPECT_EQ(film(cuts::CurrentTimeline{}), "_Con. _video.mp4") << "a device with an extension";

    for (const char* device : {"CON", "prn.mp4", "Aux .tar.gz", "NUL.", "com1", "LPT9.x", "COM0",
                               "lpt\u00B2.mp4", "CONIN$"})
        EXPECT_TRUE(portableFileName(device).starts_with('_')) << device;
    for (const char* name : {"CONcert.mp4", "COM10.mp4", "my CON.mp4", "COM.mp4", ".con"})
        EXPECT_EQ(portableFileName(name), name);
    EXPECT_EQ(portableFileName(" name. . "), " name");
    EXPECT_EQ(portableFileName("..."), "-");
    EXPECT_EQ(portableFileName("bad\xFF"
                               "byte"),
              "bad\uFFFDbyte");
}

TEST_F(CutNames, OfOneFolderDifferWithoutCaseToo) {
    DistinctFileNames names;
    EXPECT_EQ(names.add("Goal.png"), "Goal.png");
    EXPECT_EQ(names.add("GOAL.png"), "GOAL_2.png");
    EXPECT_EQ(names.add("goal_2.png"), "goal_2_2.png");
    EXPECT_EQ(names.add("Гол"), "Гол");
    EXPECT_EQ(names.add("гол"), "гол_2");
}

}  // namespace
}  // namespace tembrix
