#include <cerrno>

#include "base/files.h"

#include "core/storage/data_layout.h"
#include "core/storage/storage_fixture.h"
#include "core/storage/video_files_manager.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/fake_texts.h"

namespace tembrix {
namespace {

struct Keeper final : DeletedTimelineKeeper {
    Result<void> saveTimelineBeforeDeletion(const VideosData& video,
                                            const TimelineLines& lines) override {
        if (isFull)
            return Error{"file", ENOSPC, "No space left on device"};
        kept.emplace_back(video, lines);
        return {};
    }
    bool isFull = false;
    std::vector<std::pair<VideosData, TimelineLines>> kept;
};

struct VideoFiles : StorageTest {
    FakeBookmarks bookmarks;
    FakeTexts texts;
    VideoFilesManager library{*storage, bookmarks, folder.directories(), texts, log};
    int published = 0;

    VideoFiles() {
        library.setUpdateFiles([this](const auto& files) {
            ++published;
            EXPECT_EQ(&files, &library.files());
        });
    }
    std::filesystem::path video(const std::string& name) {
        bookmarks.add("/videos/" + name);
        return "/videos/" + name;
    }
    void store(const std::vector<VideosData>& list) {
        defaults.setData(layout::videosDataKey, encode(list).value());
    }
    std::vector<VideosData> stored() {
        return decode<std::vector<VideosData>>(*defaults.data(layout::videosDataKey)).value();
    }
    // Both lists and the store must have the same entries in the same order.
    void expectInStep() {
        ASSERT_EQ(library.files().size(), library.videosData().size());
        for (std::size_t i = 0; i < library.files().size(); ++i)
            EXPECT_EQ(library.files()[i].videoData, library.videosData()[i]);
        EXPECT_EQ(stored(), library.videosData());
    }
};

TEST_F(VideoFiles, StartsOnAnEmptyMachine) {
    library.start();
    EXPECT_TRUE(std::filesystem::is_directory(folder.directories().documents));
    EXPECT_TRUE(
        std::filesystem::is_directory(folder.directories().temporary / layout::previewFolder));
    EXPECT_TRUE(library.files().empty());
    EXPECT_TRUE(defaults.boolean(layout::videosCleanupDoneKey));
    EXPECT_TRUE(log.lines().empty());
    library.reloadFiles();  // an empty list needs no migration
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VideoFiles, AddsAVideoOnceAndKnowsItAgain) {
    library.start();
    const auto added = library.addVideoNamed(video("a.mp4"), "Final");
    ASSERT_TRUE(added);
    EXPECT_EQ(added->videoData.customName, "Final");
    EXPECT_EQ(added->videoData.isFavorite, false);
    ASSERT_EQ(added->videoData.id.size(), 32u);
    EXPECT_EQ(added->videoData.id.find_first_not_of("0123456789ABCDEF"), std::string::npos);
    EXPECT_EQ(library.addVideo("/videos/a.mp4"), added);
    EXPECT_EQ(library.files().size(), 1u);
    EXPECT_FALSE(library.addVideo("/videos/not there.mp4"));
    EXPECT_EQ(library.findById(added->videoData.id)->customName, "Final");
    EXPECT_EQ(library.findByBookmark(toBytes("other")), nullptr);
    expectInStep();
}

TEST_F(VideoFiles, AFileAddedUnderANewNameIsTheOldEntry) {
    library.start();
    const auto added = library.addVideo(video("a.mp4"));
    bookmarks.rename("/videos/a.mp4", "/videos/b.mp4");
    const auto again = library.addVideo("/videos/b.mp4");
    ASSERT_TRUE(again);
    EXPECT_EQ(again->videoData.id, added->videoData.id);
    EXPECT_EQ(library.files().size(), 1u);
    expectInStep();
}

TEST_F(VideoFiles, LoadingNormalizesAndDropsDuplicatesButNoAbsentVideo) {
    const auto a = bookmarks.add("/videos/a.mp4");
    const Bytes absent = toBytes("bookmark:/unmounted/x.mp4");
    Keeper keeper;
    library.setDeletedTimelineKeeper(&keeper);
    const TimelineLines ofDuplicate = lines();
    storage->saveTimeline(ofDuplicate, "3");
    store({{a, "1", {}, {}},
           {absent, "2", {}, true},
           {a, "3", "same file", {}},
           {absent, "4", {}, {}},
           {toBytes("garbage"), "1", "same id", {}}});
    library.start();
    EXPECT_EQ(library.videosData(),
              (std::vector<VideosData>{
                  {a, "1", {}, false}, {absent, "2", {}, true}, {absent, "4", {}, false}}));
    expectInStep();
    library.saveVideosData();
    EXPECT_EQ(library.videosData().size(), 3u);
    ASSERT_EQ(keeper.kept.size(), 1u);
    EXPECT_EQ(keeper.kept[0].first.id, "3");
    EXPECT_EQ(keeper.kept[0].second, ofDuplicate);
}

TEST_F(VideoFiles, MigratesTheOldFormOnce) {
    const TimelineLines kept = lines();
    defaults.setData(layout::videosDataKey,
                     encode(std::vector<VideosDataOldFormat>{{toBytes("1"), "A", kept, "n", {}},
                                                             {toBytes("2"), "B", {}, {}, true}})
                         .value());
    library.start();
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"🔄 Migrating timelines...",
                                                     "✅ Migration completed: 2 videos migrated"}));
    EXPECT_EQ(storage->loadTimeline("A"), kept);
    EXPECT_FALSE(defaults.data(layout::timelineKey("B")));
    EXPECT_EQ(asText(*defaults.data(layout::videosDataKey)).find("timelines"), std::string::npos);
    EXPECT_EQ(stored().front(), (VideosData{toBytes("1"), "A", "n", false}));
    log.clear();
    library.reloadFiles();
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VideoFiles, AListThatCannotBeReadIsLeftInPeaceAndSetAside) {
    const Bytes broken = toBytes(R"([{"bookmark":"AA==","id":7}])");
    defaults.setData(layout::videosDataKey, broken);
    library.start();
    EXPECT_TRUE(library.files().empty());
    EXPECT_EQ(defaults.data(layout::videosDataKey), broken);
    EXPECT_TRUE(log.contains("videosDataLoadError [0].id: expected text"));
    library.addVideo(video("a.mp4"));
    expectInStep();
    EXPECT_EQ(defaults.data(layout::damagedKey(layout::videosDataKey)), broken);
}

TEST_F(VideoFiles, EditsReachBothListsTheStoreAndTheScreens) {
    const auto a = bookmarks.add("/videos/a.mp4");
    store({{a, "1", {}, {}}});
    library.start();
    library.toggleFavorite("1");
    EXPECT_EQ(library.files()[0].videoData.isFavorite, true);
    library.toggleFavorite("1");
    EXPECT_EQ(library.files()[0].videoData.isFavorite, false);
    library.renameVideo(library.files()[0], "Derby");
    EXPECT_EQ(library.displayName(library.files()[0]), "Derby");
    EXPECT_TRUE(library.rebindVideo("1", video("moved.mp4")));
    EXPECT_EQ(library.files()[0].videoData.id, "1");
    EXPECT_EQ(library.resolveVideoURL(library.files()[0].videoData.bookmark), "/videos/moved.mp4");
    library.renameVideo(library.files()[0], "");
    EXPECT_EQ(library.displayName(library.files()[0]), "moved.mp4");
    EXPECT_EQ(published, 5);
    expectInStep();

    EXPECT_FALSE(library.rebindVideo("1", "/videos/none.mp4"));
    EXPECT_FALSE(library.rebindVideo("2", "/videos/moved.mp4"));
    library.toggleFavorite("2");
    library.renameVideo({{a, "2", {}, {}}, nullptr}, "no such entry");
    EXPECT_EQ(published, 5);
    bookmarks.remove("/videos/moved.mp4");
    EXPECT_EQ(library.displayName(library.files()[0]), "Видео недоступно");
}

TEST_F(VideoFiles, DeletingKeepsACopyOfTheTimelineAndRemovesBothOfItsForms) {
    Keeper keeper;
    library.setDeletedTimelineKeeper(&keeper);
    library.start();
    const auto marked = *library.addVideo(video("a.mp4"));
    const auto plain = *library.addVideo(video("b.mp4"));
    const TimelineLines kept = lines();
    storage->saveTimeline(kept, marked.videoData.id);
    storage->flushNow();
    EXPECT_TRUE(library.deleteVideo(plain));
    EXPECT_TRUE(keeper.kept.empty());
    keeper.isFull = true;
    EXPECT_FALSE(library.deleteVideo(marked));
    EXPECT_EQ(storage->loadTimeline(marked.videoData.id), kept);
    EXPECT_EQ(library.videosData(), std::vector{marked.videoData});
    keeper.isFull = false;
    EXPECT_TRUE(library.deleteVideo(marked));
    ASSERT_EQ(keeper.kept.size(), 1u);
    EXPECT_EQ(keeper.kept[0].first, marked.videoData);
    EXPECT_EQ(keeper.kept[0].second, kept);
    EXPECT_FALSE(defaults.data(layout::timelineKey(marked.videoData.id)));
    EXPECT_FALSE(std::filesystem::exists(storage->timelineFile(marked.videoData.id)));
    EXPECT_TRUE(library.files().empty());
    expectInStep();
    published = 0;
    EXPECT_TRUE(library.deleteVideo(marked));
    EXPECT_EQ(published, 0);
    scheduler.advance(30);
    EXPECT_FALSE(std::filesystem::exists(storage->timelineFile(marked.videoData.id)));
}

TEST_F(VideoFiles, AKilledProcessLeavesNoHalfDeletedVideo) {
    library.start();
    const auto first = *library.addVideo(video("a.mp4"));
    const auto second = *library.addVideo(video("b.mp4"));
    const std::string id = first.videoData.id;
    const TimelineLines marks = lines();
    storage->saveTimeline(marks, id);
    storage->flushNow();
    const auto before = stored();
    const auto startAgain = [&] {
        VideoFilesManager next{*storage, bookmarks, folder.directories(), texts, log};
        next.start();
        EXPECT_TRUE(defaults.keys(layout::deletedPrefix).empty());
        EXPECT_FALSE(next.lastDeleted());
        return next.videosData();
    };
    // Killed before the list was stored: nothing is deleted.
    DeletedVideos(*storage).keep({first.videoData, {}, 0, nullptr});
    EXPECT_EQ(startAgain(), before);
    EXPECT_EQ(storage->loadTimeline(id), marks);

    // Killed right after the list was stored.
    struct Killed {};
    library.setListStored([] { throw Killed(); });
    EXPECT_THROW((void)library.deleteVideo(first), Killed);
    library.setListStored({});
    EXPECT_TRUE(storage->userDefaults().data(layout::timelineKey(id)));
    EXPECT_EQ(startAgain(), std::vector{second.videoData});
    EXPECT_FALSE(defaults.data(layout::timelineKey(id)));
    EXPECT_FALSE(std::filesystem::exists(storage->timelineFile(id)));
}

struct Killed {};

// The user defaults of a process that is killed instead of making its n-th change.
struct DefaultsUntilKilled final : UserDefaults {
    explicit DefaultsUntilKilled(UserDefaults& stored) : to(stored) {}

    UserDefaults& change() {
        if (left-- == 0)
            throw Killed();
        return to;
    }
    std::optional<Bytes> data(std::string_view key) const override { return to.data(key); }
    std::optional<std::string> text(std::string_view key) const override { return to.text(key); }
    std::optional<Date> date(std::string_view key) const override { return to.date(key); }
    bool boolean(std::string_view key) const override { return to.boolean(key); }
    void setData(std::string_view key, BytesView value) override { change().setData(key, value); }
    void setPieces(std::string_view key, const ValuePieces& value) override {
        change().setPieces(key, value);
    }
    void setText(std::string_view key, std::string_view value) override {
        change().setText(key, value);
    }
    void setDate(std::string_view key, Date value) override { change().setDate(key, value); }
    void setBoolean(std::string_view key, bool value) override { change().setBoolean(key, value); }
    void remove(std::string_view key) override { change().remove(key); }
    std::vector<std::string> keys(std::string_view prefix) const override {
        return to.keys(prefix);
    }
    std::uint64_t changeNumber(std::string_view key) const override { return to.changeNumber(key); }
    std::string identity() const override { return to.identity(); }
    void continueNumbers(std::string_view, std::uint64_t) override {}
    void makeDurable() override {}
    DefaultsStatus status() const override { return {}; }
    void setStatusChanged(std::function<void()>) override {}

    UserDefaults& to;
    int left = 1'000'000;
};

TEST_F(VideoFiles, ADeletionAndItsUndoCanBeInterruptedAnywhere) {
    const TimelineLines marks = lines();
    const auto deletion = [](VideoFilesManager& manager) {
        (void)manager.deleteVideo(manager.files().front());
    };
    const auto undo = [](VideoFilesManager& manager) { (void)manager.takeBackDeletion(); };
    const auto olderList = [this](VideoFilesManager& manager) {
        store({{bookmarks.add("/videos/a.mp4"), "A", {}, false}});
        manager.reloadFiles();
    };
    const std::function<void(VideoFilesManager&)> ways[] = {deletion, undo, olderList};
    for (const auto& way : ways) {
        bool wasKilled = true;
        for (int change = 0; wasKilled; ++change) {
            SCOPED_TRACE(testing::Message() << "way " << &way - ways << ", change " << change);
            store({{bookmarks.add("/videos/a.mp4"), "A", {}, false}});
            defaults.setText(layout::positionKey("A"), "5");
            defaults.setData(layout::matchKey("A"), toBytes("{}"));
            storage->saveTimeline(marks, "A");
            {
                DefaultsUntilKilled killed(defaults);
                InMemoryStorageManager run(killed, scheduler, folder.directories(), log);
                VideoFilesManager manager(run, bookmarks, folder.directories(), texts, log);
                manager.start();
                if (&way != ways)
                    deletion(manager);
                killed.left = change;
                try {
                    way(manager);
                    wasKilled = false;
                } catch (const Killed&) {
                }
            }
            storage = makeStorage();
            VideoFilesManager next(*storage, bookmarks, folder.directories(), texts, log);
            next.start();
            const bool listed = !next.videosData().empty();
            EXPECT_TRUE(defaults.keys(layout::deletedPrefix).empty());
            EXPECT_EQ(storage->loadTimeline("A"), listed ? marks : TimelineLines());
            EXPECT_EQ(defaults.text(layout::positionKey("A")).has_value(), listed);
            EXPECT_EQ(defaults.data(layout::matchKey("A")).has_value(), listed);
        }
    }
}

TEST_F(VideoFiles, AnOlderListBringsADeletedVideoBackWithItsTimeline) {
    library.start();
    const auto marked = *library.addVideo(video("a.mp4"));
    const TimelineLines marks = lines();
    storage->saveTimeline(marks, marked.videoData.id);
    const auto before = stored();
    EXPECT_TRUE(library.deleteVideo(marked));
    store(before);
    library.reloadFiles();
    EXPECT_EQ(storage->loadTimeline(marked.videoData.id), marks);
    EXPECT_FALSE(library.lastDeleted());
    EXPECT_FALSE(library.takeBackDeletion());
    EXPECT_EQ(library.files().size(), 1u);
}

TEST_F(VideoFiles, EntriesWithEqualBookmarksAreDistinguishedByTheirIds) {
    Keeper keeper;
    library.setDeletedTimelineKeeper(&keeper);
    const Bytes none;
    store({{none, "1", "first", {}}, {none, "2", "second", {}}, {none, "3", "third", {}}});
    storage->saveTimeline(lines(), "1");
    library.start();
    library.renameVideo(library.files()[1], "renamed");
    EXPECT_TRUE(library.deleteVideo(library.files()[2]));
    EXPECT_TRUE(keeper.kept.empty());
    EXPECT_EQ(library.videosData(), (std::vector<VideosData>{{none, "1", "first", false},
                                                             {none, "2", "renamed", false}}));
    EXPECT_EQ(library.findByBookmark(none, "2")->id, "2");
    EXPECT_EQ(library.findByBookmark(none, "gone")->id, "1");
    expectInStep();
}

TEST_F(VideoFiles, AnEntryIsNotBoundToTheFileOfAnother) {
    library.start();
    const auto first = *library.addVideo(video("a.mp4"));
    const auto second = *library.addVideo(video("b.mp4"));
    bookmarks.rename("/videos/a.mp4", "/videos/renamed.mp4");
    EXPECT_FALSE(library.rebindVideo(second.videoData.id, "/videos/renamed.mp4"));
    EXPECT_EQ(library.findByFile("/videos/renamed.mp4", second.videoData.id)->id,
              first.videoData.id);
    EXPECT_EQ(library.videosData(), (std::vector{first.videoData, second.videoData}));
    EXPECT_TRUE(library.rebindVideo(second.videoData.id, "/videos/b.mp4")) << "its own";
    expectInStep();
}

TEST_F(VideoFiles, ADuplicateStaysWhileItsTimelineCannotBeKept) {
    Keeper keeper;
    keeper.isFull = true;
    library.setDeletedTimelineKeeper(&keeper);
    const auto a = bookmarks.add("/videos/a.mp4");
    store({{a, "1", {}, false}, {a, "2", {}, false}});
    storage->saveTimeline(lines(), "2");
    library.start();
    EXPECT_EQ(library.files().size(), 2u);
    keeper.isFull = false;
    library.reloadFiles();
    EXPECT_EQ(library.files().size(), 1u);
    EXPECT_EQ(keeper.kept.size(), 1u);
}

TEST_F(VideoFiles, ReloadingFollowsTheStoreAndKeepsPreviews) {
    library.start();
    const auto first = *library.addVideo(video("a.mp4"));
    library.setPreview(first.videoData.id, std::make_shared<ImageBuffer>(2, 2));
    library.appendFile({{bookmarks.add("/videos/b.mp4"), "B", {}, false}, nullptr});
    const auto reloaded = library.reloadFiles();
    ASSERT_EQ(reloaded.size(), 2u);
    EXPECT_TRUE(reloaded[0].preview);
    defaults.remove(layout::videosDataKey);
    EXPECT_TRUE(library.reloadFiles().empty());
}

}  // namespace
}  // namespace tembrix
