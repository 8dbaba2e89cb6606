// Random runs of the program compared with a simple model: data that was marked, edited and saved
// must be there after kills, losses and restores. The defaults have priority over the files. The
// files contain everything up to the last flush, the backup everything up to the last backup.

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <unistd.h>

#include "base/files.h"

#include "core/records/codec.h"
#include "core/safety/folder_copy.h"
#include "core/storage/data_layout.h"
#include "two_stores_model.h"
#include "two_stores_program.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
        names.insert(pathText(entry.path().filename()));
    return names;
}

template <class Value>
std::set<std::string> keysOf(const std::map<std::string, Value>& map, const char* suffix = "") {
    std::set<std::string> keys;
    for (const auto& entry : map)
        keys.insert(entry.first + suffix);
    return keys;
}

class TwoLives {
  public:
    explicit TwoLives(unsigned seed) : random_(seed) { launch(); }

    void step() {
        switch (below(20)) {
            case 0:
            case 1:
            case 2:
            case 3:
            case 4:
                return mark();
            case 5:
                return addVideo();
            case 6:
                return renameVideo();
            case 7:
                return deleteVideo();
            case 8:
                return saveCollection();
            case 9:
                return editCollection();
            case 10:
                return deleteCollection();
            case 11:
            case 12:
            case 13:
            case 14:
                return pass();
            case 15:
                did("back up");
                (void)program_->sync.backUpNow();
                model_.backupDue.reset();  // the launch has made it unnecessary
                return model_.backUp();
            case 16:
                did("restore");
                (void)program_->sync.restoreFromBackup();
                program_->scheduler.run();
                return model_.restore();
            case 17:
                return cutRestore();
            case 18:
                did("quit");
                program_->quit();
                model_.quit();
                return endLife();
            default:
                did("kill");
                return endLife();
        }
    }

    void check() {
        SCOPED_TRACE(story_);
        std::vector<TwoStoresModel::Video> videos;
        for (const auto& video : program_->library.videosData())
            videos.push_back({video.id, video.customName.value_or("")});
        ASSERT_EQ(videos, model_.videos);
        for (const auto& video : videos)
            ASSERT_EQ(program_->storage.loadTimeline(video.id), model_.timeline(video.id));
        ASSERT_EQ(program_->index.collections(), model_.index);
        for (const auto& row : model_.index)
            ASSERT_EQ(program_->storage.loadCollection(row.id), model_.collection(row.id));
        const Machine& m = machine_;
        ASSERT_EQ(namesIn(m.documents() / layout::collectionsFolder), keysOf(model_.folders));
        ASSERT_EQ(namesIn(m.documents() / layout::timelinesFolder),
                  keysOf(model_.timelineFiles, ".json"));
        ASSERT_EQ(namesIn(m.backup() / "Tembrix-Stat/Collections"),
                  keysOf(model_.backup.collections));
        ASSERT_EQ(namesIn(m.backup() / layout::timelinesFolder),
                  keysOf(model_.backup.timelines, ".json"));
    }

    // The records from which deleted videos can be rescued.
    void checkRecords() {
        SCOPED_TRACE(story_);
        for (const auto& [id, lines] : model_.backup.timelines) {
            const auto file =
                readFile(machine_.backup() / layout::timelinesFolder / (id + ".json"));
            ASSERT_TRUE(file.ok());
            const auto record = decode<OrphanedTimeline>(*file);
            ASSERT_TRUE(record.ok());
            ASSERT_EQ(record->timelines, lines);
        }
    }

  private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }
    void did(const std::string& what) { story_ += (story_.empty() ? "" : ", ") + what; }

    void launch() {
        machine_.interleaving = below(8) == 0 ? std::optional<unsigned>(below(1000)) : std::nullopt;
        program_ = std::make_unique<RunningProgram>(machine_);
        model_.launch();
    }

    // Ends a run; before the next one, data may be lost.
    void endLife() {
        program_.reset();
        if (below(3) == 0)
            leaveHalfReplaced();
        const unsigned loss = below(8);
        if (loss == 0 || loss == 2) {
            did("lose defaults");
            machine_.loseDefaults();
            model_.loseDefaults();
        }
        if (loss == 1 || loss == 2) {
            did("lose Documents");
            fs::remove_all(machine_.documents());
            model_.loseDocuments();
        }
        if (loss == 3 && below(2) == 0) {
            did("lose the backup");
            fs::remove_all(machine_.backup());
            model_.backup = {};
        }
        launch();
    }

    // Leaves the files of a process that was killed while it replaced a folder or a file.
    void leaveHalfReplaced() {
        std::vector<fs::path> targets;
        for (const char* item :
             {layout::collectionsFolder, layout::timelinesFolder, layout::collectionIndexFile})
            targets.push_back(machine_.documents() / item);
        targets.push_back(machine_.backup() / layout::collectionIndexFile);
        const fs::path copies = machine_.backup() / "Tembrix-Stat/Collections";
        for (const auto& id : namesIn(copies))
            targets.push_back(copies / id);
        const fs::path target = targets[below(static_cast<unsigned>(targets.size()))];
        if (!fs::exists(target))
            return;
        did("half-replaced " + pathText(target.filename()));
        fs::create_directories(stagingPlace(target) / "half");
        if (below(2) == 0) {
            fs::path aside = target;
            aside += ".replaced";
            fs::rename(target, aside);
        }
    }

    // Kills a restore after one of its copy operations.
    void cutRestore() {
        // The log lines of a restore: start, collections, fields, timelines, index, defaults.
        const int line = 1 + static_cast<int>(below(6));
        constexpr int steps[] = {0, 0, 1, 1, 2, 3, 4};
        did("restore cut at line " + std::to_string(line));
        program_->log.linesLeft = line;
        EXPECT_THROW((void)program_->sync.restoreFromBackup(), CuttingLog::Cut);
        model_.flush();
        model_.restoreFiles(steps[line]);
        model_.unfinishedRestore = true;
        endLife();
    }

    void mark() {
        if (model_.videos.empty())
            return;
        const auto& id = model_.videos[below(static_cast<unsigned>(model_.videos.size()))].id;
        did("mark");
        auto& timeline = program_->timeline;
        timeline.openTimeline(program_->library.findById(id)->bookmark,
                              program_->storage.loadTimeline(id));
        if (timeline.lines->size() < 2 || below(8) == 0)
            timeline.addLine("Line");
        const Uuid line = timeline.lines->back()->id;
        const auto& stamps = timeline.findLine(line)->stamps;
        if (!stamps.empty() && below(3) == 0) {
            timeline.removeStamp(line, stamps.front()->id);
        } else {
            TimelineStamp stamp;
            stamp.id = Uuid::random();
            stamp.idTag = "shot";
            stamp.timeStartSeconds = below(5000);
            stamp.timeFinishSeconds = stamp.timeStartSeconds + 5;
            ASSERT_TRUE(timeline.appendStamp(line, stamp));
        }
        program_->scheduler.run();
        model_.saveTimeline(id, *timeline.lines);
    }

    void addVideo() {
        did("add a video");
        const std::string name = "match " + std::to_string(++made_);
        const fs::path file = machine_.folder.path() / (name + ".mp4");
        machine_.bookmarks.add(file);
        const auto added = program_->library.addVideoNamed(file, name);
        ASSERT_TRUE(added);
        model_.videos.push_back({added->videoData.id, name});
    }
    std::optional<FilesFile> anyVideo() {
        const auto& files = program_->library.files();
        if (files.empty())
            return std::nullopt;
        return files[below(static_cast<unsigned>(files.size()))];
    }
    void renameVideo() {
        const auto video = anyVideo();
        if (!video)
            return;
        did("rename a video");
        const std::string name = "renamed " + std::to_string(++made_);
        program_->library.renameVideo(*video, name);
        for (auto& one : model_.videos)
            if (one.id == video->videoData.id)
                one.name = name;
    }
    void deleteVideo() {
        const auto video = anyVideo();
        if (!video || below(2) == 0)
            return;
        did("delete a video");
        ASSERT_TRUE(program_->library.deleteVideo(*video));
        model_.deleteVideo(video->videoData.id);
    }

    std::string anyName() { return below(2) == 0 ? "Hockey" : "Football"; }
    void store(CustomCollectionManager& collection) {
        const auto saved = program_->save(collection, "Tag " + std::to_string(++made_));
        const CollectionLists& lists = collection.lists();
        model_.saveCollection({.id = saved.id,
                               .tagGroups = lists.tagGroups,
                               .tags = lists.tags,
                               .labelGroups = lists.labelGroups,
                               .labels = lists.labels,
                               .timeEvents = lists.timeEvents,
                               .playField = {}},
                              saved.name);
    }
    void saveCollection() {
        did("save a collection");
        CustomCollectionManager collection(program_->collections);
        collection.setCollectionName(anyName());
        store(collection);
    }
    std::optional<CollectionInfo> anyCollection() {
        if (model_.index.empty())
            return std::nullopt;
        return model_.index[below(static_cast<unsigned>(model_.index.size()))];
    }
    void editCollection() {
        const auto row = anyCollection();
        if (!row || !model_.collection(row->id))
            return;
        did("edit a collection");
        CollectionBookmark chosen;
        chosen.id = row->id;
        chosen.name = row->name;
        CustomCollectionManager collection(program_->collections, chosen);
        if (below(2) == 0)
            collection.setCollectionName(anyName());
        store(collection);
    }
    void deleteCollection() {
        const auto row = anyCollection();
        if (!row || below(2) == 0)
            return;
        did("delete a collection");
        program_->tagLibrary.deleteUserCollection(*row);
        program_->scheduler.run();
        model_.deleteCollection(row->id);
    }

    void pass() {
        constexpr double times[] = {0.3, 1.1, 2.5, 7, 31};
        const double seconds = times[below(5)];
        did(std::to_string(seconds).substr(0, 4) + " s");
        program_->scheduler.advance(seconds);
        model_.pass(seconds);
    }

    std::mt19937 random_;
    std::string story_;
    int made_ = 0;
    Machine machine_;
    TwoStoresModel model_;
    std::unique_ptr<RunningProgram> program_;
};

// Thousands of small files are synced, which is fast in memory.
struct TwoStores : testing::Test {
    TwoStores() {
        if (fs::is_directory("/dev/shm") && ::access("/dev/shm", W_OK) == 0)
            ::setenv("TMPDIR", "/dev/shm", 1);
    }
    ~TwoStores() override {
        if (before_)
            ::setenv("TMPDIR", before_->c_str(), 1);
        else
            ::unsetenv("TMPDIR");
    }

  private:
    static std::optional<std::string> environment(const char* name) {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    }
    std::optional<std::string> before_ = environment("TMPDIR");
};

TEST_F(TwoStores, WhatComesBackIsWhatWasThere) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        TwoLives lives(seed);
        for (int step = 0; step < 40; ++step) {
            lives.step();
            lives.check();
            if (testing::Test::HasFatalFailure())
                return;
        }
        lives.checkRecords();
        if (testing::Test::HasFailure())
            return;
    }
}

}  // namespace
}  // namespace tembrix
