#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "core/composition/core_services.h"
#include "fakes/fake_platform.h"

namespace tembrix {

// State that outlives a process.
struct Machine {
    TempFolder folder;
    std::unique_ptr<MemoryUserDefaults> defaults = std::make_unique<MemoryUserDefaults>();
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;
    // The seed for interleaving background work; without it, each task runs as a whole.
    std::optional<unsigned> interleaving;

    // Removes the database and the second copy.
    void loseDefaults() {
        defaults = std::make_unique<MemoryUserDefaults>();
        std::filesystem::remove(secondCopy());
    }
    std::filesystem::path secondCopy() const {
        return folder.path() / "Application Support/tembrix-stat/second-copy.plist";
    }
    std::filesystem::path documents() const { return folder.path() / "Documents/Tembrix-Stat"; }
    std::filesystem::path backup() const {
        return folder.path() / "Application Support/Tembrix-Stat-Backup";
    }
};

// A log that can end the process at a given line.
class CuttingLog final : public Log {
  public:
    struct Cut {};

    void line(std::string_view text) override {
        if (linesLeft > 0 && --linesLeft == 0)
            throw Cut{};
        kept.line(text);
    }

    CapturedLog kept;
    int linesLeft = 0;  // 0: never
};

// One process, started like the program. Destroying the object kills it.
struct RunningProgram : private FakePlatform {
    explicit RunningProgram(Machine& m) : machine(m) {
        if (machine.interleaving)
            scheduler.interleave(*machine.interleaving);
        core.start();
        scheduler.run();
        scheduler.runWhole();
    }
    void quit() {
        storage.applicationWillTerminate();
        scheduler.run();
    }
    CollectionInfo save(CustomCollectionManager& collection, const std::string& tagName) {
        TagFormData form;
        form.name = tagName;
        form.hexColor = "0000FF";
        if (collection.lists().tagGroups.empty())
            collection.addTagGroup("Group");
        collection.addTag(form, collection.lists().tagGroups.front().id);
        collection.saveCollection();
        scheduler.run();
        return {collection.collectionID(), collection.collectionName()};
    }

    Machine& machine;
    using FakePlatform::propertyLists;
    using FakePlatform::scheduler;
    CuttingLog log;
    CoreServices core{platform({.log = &log,
                                .directories = machine.folder.directories(),
                                .resources = machine.folder.path() / "no resources",
                                .defaults = machine.defaults.get(),
                                .keychain = &machine.keychain,
                                .bookmarks = &machine.bookmarks}),
                      noWindows};
    EventBus& events = core.events;
    InMemoryStorageManager& storage = core.storage;
    CollectionsBookmarksManager& index = core.index;
    DataSyncManager& sync = core.dataSync;
    CollectionServices& collections = core.collections;
    VideoFilesManager& library = core.library;
    TagLibraryManager& tagLibrary = core.tagLibrary;
    Project project{core.projectServices, core.windows, core.windows};
    TimelineDataManager& timeline = project.timeline;
};

}  // namespace tembrix
