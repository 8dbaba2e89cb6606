#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/records/codec.h"
#include "core/storage/in_memory_storage_manager.h"
#include "fakes/captured_log.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {

// A collection index that a test can set.
class FakeIndex final : public CollectionIndexStorage {
  public:
    std::vector<CollectionInfo> collections() override { return listed; }
    void saveNow() override { ++saves; }

    std::vector<CollectionInfo> listed;
    int saves = 0;
};

inline TimelineStamp stampAt(double seconds, std::string label = "Pass") {
    TimelineStamp stamp;
    stamp.id = Uuid::random();
    stamp.idTag = "tag";
    stamp.timeStartSeconds = seconds;
    stamp.timeFinishSeconds = seconds + 4.25;
    stamp.colorHex = "FF8000";
    stamp.label = std::move(label);
    return stamp;
}

inline TimelineLine lineOf(std::string name, Stamps stamps) {
    return {Uuid::random(), std::move(name), std::move(stamps), ""};
}

inline CollectionData collectionOf(std::string id) {
    CollectionData collection;
    collection.id = std::move(id);
    collection.tags.push_back({"t", {}, "Goal", "", "FF0000", 5, 3, {}, {}, {}, {}, {}, {}});
    collection.tagGroups.push_back({"g", "All", {"t"}});
    collection.labels.push_back({"l", "Left", ""});
    collection.labelGroups.push_back({"lg", "Side", {"l"}});
    collection.timeEvents.push_back({"e", "First half"});
    return collection;
}

// The storage with its own folder, defaults and clock.
struct StorageTest : testing::Test {
    TempFolder folder;
    MemoryUserDefaults defaults;
    VirtualScheduler scheduler;
    CapturedLog log;
    FakeIndex index;
    std::unique_ptr<InMemoryStorageManager> storage = makeStorage();

    std::unique_ptr<InMemoryStorageManager> makeStorage() {
        return std::make_unique<InMemoryStorageManager>(defaults, scheduler, folder.directories(),
                                                        log);
    }
    TimelineLines lines() { return {lineOf("One", {stampAt(1), stampAt(9)}), lineOf("Two", {})}; }
};

}  // namespace tembrix
