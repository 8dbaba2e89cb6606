#pragma once

#include <memory>
#include <string>

#include "core/collections/tag_library_manager.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/marking/marking_flow.h"
#include "core/playback/video_player_manager.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"
#include "fakes/captured_log.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/fake_panels.h"
#include "fakes/fake_player.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_keychain.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {

// The services of the core on fakes, wired as the program wires them, for tests that need many at
// once. The standard collections are the ones that ship.
struct CoreProject {
    TempFolder folder;
    VirtualScheduler scheduler;
    MemoryUserDefaults defaults;
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;
    FakePanels panels;
    FakeTexts texts;
    FakeLocale locale;
    FakePlayerFactory players;
    CapturedLog log;
    EventBus events;
    FocusStateManager focus;

    InMemoryStorageManager storage{defaults, scheduler, folder.directories(), log};
    CollectionsBookmarksManager index{storage, bookmarks, keychain, scheduler, events, log};
    CollectionServices collections{storage, index, bookmarks, scheduler, events, texts, log};
    VideoFilesManager library{storage, bookmarks, folder.directories(), texts, log};
    TagLibraryManager tagLibrary{collections, TEMBRIX_RESOURCES "/collections", locale};
    MarkupModeStore markupModes{defaults, events};
    TimelineDataManager timeline{storage, library, tagLibrary, markupModes, events, texts};
    VideoPlayerManager player{players, log};
    HotKeyManager hotkeys{events, scheduler, focus, player};

    CoreProject() {
        players.duration = 100;
        players.finishSeeksAtOnce = true;
        storage.setCollectionIndex(&index);
        tagLibrary.setHotkeyRegistry(&hotkeys);
        library.start();
        scheduler.run();
    }
    ~CoreProject() { tagLibrary.setHotkeyRegistry(nullptr); }

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
