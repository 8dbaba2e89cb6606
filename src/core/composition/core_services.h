#pragma once

#include "base/signal.h"

#include "ports/platform.h"

#include "core/collections/collections_bookmarks_manager.h"
#include "core/collections/custom_collection_manager.h"
#include "core/collections/tag_library_manager.h"
#include "core/commands/command_keys.h"
#include "core/commands/commands.h"
#include "core/export/unsaved_products.h"
#include "core/keyboard/text_focus.h"
#include "core/notifications/event_bus.h"
#include "core/playback/pausing_panels.h"
#include "core/safety/data_sync_manager.h"
#include "core/settings/settings.h"
#include "core/shell/project.h"
#include "core/shell/start_up.h"
#include "core/shell/windows_manager.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/storage_health.h"
#include "core/storage/video_files_manager.h"
#include "core/storage/videos_preview_manager.h"

namespace tembrix {

// Creates and connects all services of the process. Each member uses only members above it. What
// belongs to an open video is in Project, which `windows` creates. The program, the tests, the
// benchmarks and the demo tour all use this class, each with its own platform. Main thread only.
class CoreServices {
  public:
    // Creates and connects the services. Nothing is read yet.
    CoreServices(const Platform& platform, WindowFactory& windowFactory);
    ~CoreServices();
    CoreServices(const CoreServices&) = delete;
    CoreServices& operator=(const CoreServices&) = delete;

    // Starts the program in the stages of StartUp. Called once.
    void start();

    PausingPanels panels;
    const Platform platform;  // with these panels
    EventBus events;
    Settings settings;
    FocusStateManager focus;
    StorageHealth health;
    InMemoryStorageManager storage;
    CollectionsBookmarksManager index;
    DataSyncManager dataSync;
    VideoFilesManager library;
    VideosPreviewManager previews;
    UnsavedProducts products;
    CollectionServices collections;
    TagLibraryManager tagLibrary;
    CommandKeys commandKeys;
    Commands commands;
    const ProjectServices projectServices;
    WindowsManager windows;
    StartUp startUp;

  private:
    Subscription languageChanged_;
    Subscription incidents_;
};

}  // namespace tembrix
