#pragma once

#include <filesystem>
#include <string>

#include "ports/platform.h"

#include "core/collections/custom_collection_manager.h"
#include "core/collections/tag_library_manager.h"
#include "core/commands/commands.h"
#include "core/export/export_services.h"
#include "core/export/unsaved_products.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/key_windows.h"
#include "core/keyboard/text_focus.h"
#include "core/marking/field_map_question.h"
#include "core/marking/marking_flow.h"
#include "core/notifications/event_bus.h"
#include "core/playback/playback_commands.h"
#include "core/playback/playback_sound.h"
#include "core/playback/position_memory.h"
#include "core/playback/video_player_manager.h"
#include "core/records/video_records.h"
#include "core/settings/settings.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"
#include "core/timeline/markup_mode_store.h"
#include "core/timeline/timeline_data_manager.h"
#include "core/timeline/timeline_history.h"

namespace tembrix {

// The services of the process that projects use. They outlive every project.
struct ProjectServices {
    const Platform& platform;
    EventBus& events;
    Settings& settings;
    FocusStateManager& focus;
    InMemoryStorageManager& storage;
    VideoFilesManager& library;
    CollectionServices& collections;
    TagLibraryManager& tagLibrary;
    Commands& commands;
    UnsavedProducts& products;
};

// An open video with everything that belongs to it: timelines, undo history, player, hot keys and
// the state of marking. It is created when the video is opened and destroyed when it is closed, so
// that no state is left for the next project. Its windows are closed first. Main thread only.
class Project {
  public:
    Project(const ProjectServices& services, const KeyWindows& windows, FieldMapQuestion& fieldMap);
    ~Project();
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    // Loads the timelines and starts the player. Called once, right after construction.
    void open(const VideosData& video, const std::filesystem::path& file);
    const std::string& videoId() const { return videoId_; }

    const ProjectServices services;
    MarkupModeStore markupModes;
    TimelineDataManager timeline;
    TimelineHistory history;
    VideoPlayerManager player;
    PositionMemory position;
    HotKeyManager hotkeys;
    MarkingFlow marking;
    ExportServices exports;
    PlaybackCommands playbackCommands;
    PlaybackSound sound;

  private:
    std::string videoId_;
};

}  // namespace tembrix
