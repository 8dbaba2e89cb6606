#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "core/safety/data_sync_manager.h"
#include "core/timeline/timeline_data_manager.h"
#include "fakes/captured_log.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/fake_property_list.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_keychain.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {

// What outlives a process.
struct Machine {
    TempFolder folder;
    std::unique_ptr<MemoryUserDefaults> defaults = std::make_unique<MemoryUserDefaults>();
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;
    bool libraryComesLate = false;  // after the launch work, not before it

    std::filesystem::path documents() const { return folder.path() / "Documents/Tembrix-Stat"; }
    std::filesystem::path backup() const {
        return folder.path() / "Application Support/Tembrix-Stat-Backup";
    }
};

// A log that can end the process when it is to take its n-th line from now.
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

// One process: the services wired and started as the program does. Destroying it kills it.
struct RunningProgram {
    explicit RunningProgram(Machine& m) : machine(m) {
        storage.setCollectionIndex(&index);
        library.setDeletedTimelineKeeper(&sync);
        sync.setRestored([this] {
            library.reloadFiles();
            events.post(events::CollectionDataChanged{});
        });
        sync.syncOnLaunch();
        if (machine.libraryComesLate)
            scheduler.run();
        library.start();
        scheduler.run();
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
    VirtualScheduler scheduler;
    CuttingLog log;
    FakeTexts texts;
    FakeLocale locale;
    FakePropertyList lists;
    EventBus events;
    InMemoryStorageManager storage{*machine.defaults, scheduler, machine.folder.directories(), log};
    CollectionsBookmarksManager index{
        storage, machine.bookmarks, machine.keychain, scheduler, events, log};
    DataSyncManager sync{DataSyncServices{*machine.defaults, storage, index, machine.bookmarks,
                                          lists, scheduler, machine.folder.directories(), log}};
    CollectionServices collections{storage, index, machine.bookmarks, scheduler, events,
                                   texts,   log};
    VideoFilesManager library{storage, machine.bookmarks, machine.folder.directories(), texts, log};
    TagLibraryManager tagLibrary{collections, machine.folder.path() / "no standard ones", locale};
    MarkupModeStore markupModes{*machine.defaults, events};
    TimelineDataManager timeline{storage, library, tagLibrary, markupModes, events, texts};
};

}  // namespace tembrix
