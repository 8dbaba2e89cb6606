#pragma once

#include <string>

#include "core/composition/core_services.h"
#include "core/marking/marking_flow.h"
#include "fakes/fake_platform.h"

namespace tembrix {

// The services of the core on fakes, for tests that need many at once. The standard collections
// are the ones that ship.
struct CoreProject : FakePlatform {
    CoreServices core;

    EventBus& events = core.events;
    FocusStateManager& focus = core.focus;
    InMemoryStorageManager& storage = core.storage;
    CollectionsBookmarksManager& index = core.index;
    CollectionServices& collections = core.collections;
    VideoFilesManager& library = core.library;
    TagLibraryManager& tagLibrary = core.tagLibrary;
    MarkupModeStore& markupModes = core.markupModes;
    TimelineDataManager& timeline = core.timeline;
    VideoPlayerManager& player = core.player;
    HotKeyManager& hotkeys = core.hotkeys;

    explicit CoreProject(const Others& others = {}) : core(platform(others)) {
        players.duration = 100;
        players.finishSeeksAtOnce = true;
        library.start();
        tagLibrary.start();
        scheduler.run();
    }

    // Adds a video that bookmarks resolve; returns its id.
    std::string addVideo(const std::string& name = "match.mp4") {
        const auto file = folder.write(name, "video");
        return library.addVideoNamed(file, name)->videoData.id;
    }

    // Opens a new video in the timeline store and the player, as opening a project does.
    std::string openVideo(const std::string& name = "match.mp4") {
        const std::string id = addVideo(name);
        const VideosData& video = *library.findById(id);
        timeline.openTimeline(video.bookmark, storage.loadTimeline(id));
        player.open(*library.resolveVideoURL(video.bookmark));
        tagLibrary.rebuildHotkeys();
        hotkeys.startMonitoring();
        return id;
    }
};

}  // namespace tembrix
