#include "app/shell/project_windows.h"

#include <utility>

#include "app/control/full_control_view.h"
#include "app/marking/tag_library_view.h"
#include "app/playback/video_player_view.h"
#include "app/settings/settings_view.h"
#include "core/composition/core_services.h"
#include "core/shell/project.h"
#include "core/shell/window_table.h"

namespace tembrix {

QtWindowFactory::Makers windowMakers(CoreServices& core, VideoSurfaceFactory makeVideoSurface,
                                     KeyTranslation translate) {
    return {
        {WindowKind::video,
         [&core, makeVideoSurface = std::move(makeVideoSurface)](QWidget* parent) -> QWidget* {
             Project& project = *core.windows.project();
             return new VideoPlayerView({core.platform.texts, core.commands, core.settings,
                                         project.player, makeVideoSurface},
                                        parent);
         }},
        {WindowKind::control,
         [&core](QWidget* parent) -> QWidget* {
             Project& project = *core.windows.project();
             return new FullControlView(
                 {project.timeline, project.history, project.player, project.hotkeys,
                  project.markupModes, project.exports, core.tagLibrary, core.focus,
                  core.platform.defaults, core.health, core.platform.scheduler, core.events,
                  core.commands, core.platform.panels, core.platform.texts},
                 parent);
         }},
        {WindowKind::tagLibrary,
         [&core](QWidget* parent) -> QWidget* {
             Project& project = *core.windows.project();
             return new TagLibraryView(
                 {project.timeline, core.tagLibrary, project.player, project.hotkeys, core.events,
                  core.commands, core.settings, core.platform.panels, core.platform.texts},
                 project.marking, parent);
         }},
        {WindowKind::settings,
         [&core, translate = std::move(translate)](QWidget* parent) -> QWidget* {
             return new SettingsView(
                 {core.platform.texts, core.settings, core.commands, core.tagLibrary, core.focus,
                  core.platform.panels, core.platform.scheduler, translate},
                 parent);
         }},
    };
}

}  // namespace tembrix
