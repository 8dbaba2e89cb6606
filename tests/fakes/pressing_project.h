#pragma once

#include <filesystem>
#include <string>

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/composition/core_services.h"
#include "core/shell/project.h"
#include "fakes/fake_platform.h"

namespace tembrix {

// Everything from a key press to a real database in the given folder. The folder outlives the
// object: a second one on the same folder finds the values stored by the first.
struct PressingProject final : FakePlatform, private KeyWindows, private FieldMapQuestion {
    explicit PressingProject(const std::filesystem::path& data)
        : directories{data / "Documents", data / "Application Support", data / "tmp"},
          defaults(databaseIn(data), log),
          core(platform({.directories = directories, .defaults = &defaults}), noWindows) {
        players.duration = 3 * 3600;
        players.finishSeeksAtOnce = true;
        library.start();
        tagLibrary.start();
        scheduler.run();
    }

    static std::filesystem::path databaseIn(const std::filesystem::path& data) {
        return data / "defaults.db";
    }

    // Adds a video that only the bookmarks know, unless it is in the library. Returns its id.
    std::string addVideo(const std::string& name) {
        const std::filesystem::path file = directories.documents / name;
        const Bytes bookmark = bookmarks.add(file);
        if (const VideosData* known = library.findByBookmark(bookmark))
            return known->id;
        return library.addVideoNamed(file, name)->videoData.id;
    }
    // Opens it as a project, with the tag panel and a line to mark on.
    void open(const std::string& videoId) {
        const VideosData& video = *library.findById(videoId);
        project.open(video, *library.resolveVideoURL(video.bookmark));
        flow.appear();
        if (timeline.lines->size() < 2)
            timeline.addLine("Events");
        else
            timeline.selectLine(timeline.lines->back()->id);
        scheduler.run();
    }

    // Presses the hot key of a tag without labels and runs all resulting tasks.
    void strike() {
        hotkeys.handleKeyDown({45, {}, "n"});
        scheduler.run();
    }

    Directories directories;
    SqliteUserDefaults defaults;
    CoreServices core;
    InMemoryStorageManager& storage = core.storage;
    VideoFilesManager& library = core.library;
    TagLibraryManager& tagLibrary = core.tagLibrary;
    Project project{core.projectServices, *this, *this};
    TimelineDataManager& timeline = project.timeline;
    TimelineHistory& history = project.history;
    VideoPlayerManager& player = project.player;
    HotKeyManager& hotkeys = project.hotkeys;
    MarkingFlow& flow = project.marking;

  private:
    bool isControlOrLibraryKey() const override { return true; }
    bool isProjectWindowActive() const override { return true; }
    bool isViewerActive() const override { return false; }
    void openFieldMapSelection(const Tag&, const Bytes&, std::function<void(Point)>) override {}
};

}  // namespace tembrix
