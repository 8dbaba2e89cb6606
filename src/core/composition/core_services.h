#pragma once

#include "core/collections/collections_bookmarks_manager.h"
#include "core/collections/custom_collection_manager.h"
#include "core/collections/tag_library_manager.h"
#include "core/composition/platform.h"
#include "core/export/export_services.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/text_focus.h"
#include "core/notifications/event_bus.h"
#include "core/playback/video_player_manager.h"
#include "core/safety/data_sync_manager.h"
#include "core/shell/start_up.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"
#include "core/storage/videos_preview_manager.h"
#include "core/timeline/markup_mode_store.h"
#include "core/timeline/timeline_data_manager.h"
#include "core/timeline/timeline_history.h"

namespace tembrix {

// The one place where the services of the core are made and connected. Each member needs only
// members above it. The program, the tests, the benchmarks and the demo tour all work with one of
// these; they differ in the platform. Main thread only.
class CoreServices {
  public:
    // Makes and connects the services. Nothing is read yet.
    explicit CoreServices(const Platform& platform);
    ~CoreServices();
    CoreServices(const CoreServices&) = delete;
    CoreServices& operator=(const CoreServices&) = delete;

    // The start of the program, once, in the stages of StartUp.
    void start();

    const Platform platform;
    EventBus events;
    FocusStateManager focus;
    InMemoryStorageManager storage;
    CollectionsBookmarksManager index;
    DataSyncManager dataSync;
    VideoFilesManager library;
    VideosPreviewManager previews;
    CollectionServices collections;
    TagLibraryManager tagLibrary;
    MarkupModeStore markupModes;
    TimelineDataManager timeline;
    TimelineHistory history;
    VideoPlayerManager player;
    HotKeyManager hotkeys;
    ExportServices exports;
    StartUp startUp;
};

}  // namespace tembrix
