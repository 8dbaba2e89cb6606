#include "core/shell/project.h"

#include "core/records/timeline_records.h"
#include "core/storage/data_layout.h"

namespace tembrix {

Project::Project(const ProjectServices& s, const KeyWindows& windows, FieldMapQuestion& fieldMap)
    : services(s),
      markupModes(s.platform.defaults, s.events),
      timeline(s.storage, s.library, s.tagLibrary, markupModes, s.events, s.platform.texts),
      history(timeline),
      player(s.platform.players, s.platform.log),
      position(player, s.platform.defaults, s.platform.scheduler),
      hotkeys(s.events, s.platform.scheduler, s.focus, player, s.settings),
      marking(timeline, s.tagLibrary, markupModes, s.collections, player, fieldMap,
              s.platform.scheduler, s.events),
      exports{player,
              timeline,
              s.tagLibrary,
              s.platform.media,
              s.platform.renderer,
              s.platform.pictures,
              s.platform.textMeasure,
              s.platform.processes,
              s.platform.panels,
              s.platform.scheduler,
              s.platform.directories,
              s.platform.texts,
              s.platform.log,
              s.products},
      playbackCommands(s.commands, player),
      sound(s.commands, player, s.settings) {
    hotkeys.setKeyWindows(&windows);
    s.tagLibrary.setHotkeyRegistry(&hotkeys);
}

Project::~Project() {
    if (!services.library.findById(videoId_))
        position.forget();
    services.tagLibrary.setHotkeyRegistry(nullptr);
}

void Project::open(const VideosData& video, const std::filesystem::path& file) {
    videoId_ = video.id;
    TimelineLines loaded = services.storage.loadTimeline(video.id);
    services.platform.defaults.setText(layout::editingLineKey, "");
    services.platform.defaults.setText(layout::editingStampKey, "");
    timeline.openTimeline(video.bookmark, std::move(loaded), video.id);
    player.open(file, services.settings.values->playsOnOpening);
    position.begin(video.id);
}

}  // namespace tembrix
