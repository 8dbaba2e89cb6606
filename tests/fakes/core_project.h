#pragma once

#include <optional>
#include <string>

#include "core/composition/core_services.h"
#include "core/shell/project.h"
#include "fakes/fake_platform.h"

namespace tembrix {

// All core services with fakes, started, for tests that use many of them. The standard collections
// are the program's own.
struct CoreProgram : FakePlatform {
    CoreServices core;

    EventBus& events = core.events;
    FocusStateManager& focus = core.focus;
    InMemoryStorageManager& storage = core.storage;
    CollectionsBookmarksManager& index = core.index;
    CollectionServices& collections = core.collections;
    VideoFilesManager& library = core.library;
    TagLibraryManager& tagLibrary = core.tagLibrary;

    explicit CoreProgram(const Others& others = {}) : CoreProgram(others, noWindows) {}
    explicit CoreProgram(WindowFactory& windows) : CoreProgram(Others{}, windows) {}

    // Adds a video whose bookmark can be resolved. Returns its id.
    std::string addVideo(const std::string& name = "match.mp4") {
        const auto file = folder.write(name, "video");
        return library.addVideoNamed(file, name)->videoData.id;
    }

    // Stores a user collection, whose id is its name.
    void addCollection(const std::string& name, const CollectionLists& lists) {
        storage.saveCollection({name, lists.tagGroups, lists.tags, lists.labelGroups, lists.labels,
                                lists.timeEvents, std::nullopt});
        index.addOrUpdateCollection(name, name);
        events.post(tembrix::events::CollectionDataChanged{});
        scheduler.run();
    }
    // The same, and selects it.
    void useCollection(const std::string& name, const CollectionLists& lists) {
        addCollection(name, lists);
        tagLibrary.selectUserCollection(name);
        scheduler.run();
    }

  private:
    CoreProgram(const Others& others, WindowFactory& windows) : core(platform(others), windows) {
        players.duration = 100;
        players.finishSeeksAtOnce = true;
        library.start();
        tagLibrary.start();
        scheduler.run();
    }
};

// An open project without windows.
struct CoreProject : CoreProgram {
    Project opened{core.projectServices, core.windows, core.windows};

    MarkupModeStore& markupModes = opened.markupModes;
    TimelineDataManager& timeline = opened.timeline;
    TimelineHistory& history = opened.history;
    VideoPlayerManager& player = opened.player;
    HotKeyManager& hotkeys = opened.hotkeys;

    explicit CoreProject(const Others& others = {}) : CoreProgram(others) {}

    // Adds a video and opens it as the project. Returns its id.
    std::string openVideo(const std::string& name = "match.mp4") {
        const std::string id = addVideo(name);
        const VideosData& video = *library.findById(id);
        opened.open(video, *library.resolveVideoURL(video.bookmark));
        return id;
    }
};

}  // namespace tembrix
