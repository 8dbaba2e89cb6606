#pragma once

#include <filesystem>
#include <string>

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/marking/marking_flow.h"
#include "core/playback/video_player_manager.h"
#include "core/timeline/timeline_history.h"
#include "fakes/captured_log.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/fake_player.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_keychain.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {

// The whole road of a key press, from the keyboard to a real database in the given folder, which
// outlives the object: a second one on the same folder finds what the first has stored.
struct PressingProject final : private KeyWindows, private FieldMapQuestion {
    explicit PressingProject(const std::filesystem::path& folder)
        : directories{folder / "Documents", folder / "Application Support", folder / "tmp"},
          defaults(databaseIn(folder), log) {
        players.duration = 3 * 3600;
        players.finishSeeksAtOnce = true;
        storage.setCollectionIndex(&index);
        hotkeys.setKeyWindows(this);
        library.start();
        tagLibrary.setHotkeyRegistry(&hotkeys);
        scheduler.run();
    }
    ~PressingProject() { tagLibrary.setHotkeyRegistry(nullptr); }

    static std::filesystem::path databaseIn(const std::filesystem::path& folder) {
        return folder / "defaults.db";
    }

    // Adds a video that only bookmarks know of, unless the library has it; returns its id.
    std::string addVideo(const std::string& name) {
        const std::filesystem::path file = directories.documents / name;
        const Bytes bookmark = bookmarks.add(file);
        if (const VideosData* known = library.findByBookmark(bookmark))
            return known->id;
        return library.addVideoNamed(file, name)->videoData.id;
    }
    // Opens it as a project, with the tag panel up and a line to mark on.
    void open(const std::string& videoId) {
        const VideosData& video = *library.findById(videoId);
        timeline.openTimeline(video.bookmark, storage.loadTimeline(videoId));
        player.open(*library.resolveVideoURL(video.bookmark));
        flow.appear();
        if (timeline.lines->size() < 2)
            timeline.addLine("Events");
        else
            timeline.selectLine(timeline.lines->back()->id);
        hotkeys.startMonitoring();
        scheduler.run();
    }

    // Strikes the key of a tag without labels and lets everything happen that the press sets off.
    void strike() {
        hotkeys.handleKeyDown({45, {}, "n"});
        scheduler.run();
    }

    Directories directories;
    VirtualScheduler scheduler;
    CapturedLog log;
    SqliteUserDefaults defaults;
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;
    FakeTexts texts;
    FakeLocale locale;
    FakePlayerFactory players;
    EventBus events;
    FocusStateManager focus;
    InMemoryStorageManager storage{defaults, scheduler, directories, log};
    CollectionsBookmarksManager index{storage, bookmarks, keychain, scheduler, events, log};
    CollectionServices collections{storage, index, bookmarks, scheduler, events, texts, log};
    VideoFilesManager library{storage, bookmarks, directories, texts, log};
    TagLibraryManager tagLibrary{collections, TEMBRIX_RESOURCES "/collections", locale};
    MarkupModeStore markupModes{defaults, events};
    TimelineDataManager timeline{storage, library, tagLibrary, markupModes, events, texts};
    TimelineHistory history{timeline};
    VideoPlayerManager player{players, log};
    HotKeyManager hotkeys{events, scheduler, focus, player};
    MarkingFlow flow{timeline, tagLibrary, markupModes, collections,
                     player,   *this,      scheduler,   events};

  private:
    bool isControlOrLibraryKey() const override { return true; }
    bool isProjectWindowActive() const override { return true; }
    bool isViewerActive() const override { return false; }
    void openFieldMapSelection(const Tag&, const Bytes&, std::function<void(Point)>) override {}
};

}  // namespace tembrix
