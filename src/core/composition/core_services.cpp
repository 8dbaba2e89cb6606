#include "core/composition/core_services.h"

#include "ports/scheduler.h"

#include "core/export/run_folder.h"
#include "core/notifications/events.h"

namespace tembrix {

CoreServices::CoreServices(const Platform& p)
    : platform(p),
      storage(p.defaults, p.scheduler, p.directories, p.log),
      index(storage, p.bookmarks, p.keychain, p.scheduler, events, p.log),
      dataSync({p.defaults, storage, index, p.bookmarks, p.propertyLists, p.scheduler,
                p.directories, p.log}),
      library(storage, p.bookmarks, p.directories, p.texts, p.log),
      previews(p.media, p.images, p.scheduler, p.directories),
      collections{storage, index, p.bookmarks, p.scheduler, events, p.texts, p.log},
      tagLibrary(collections, p.resources / "collections", p.locale),
      markupModes(p.defaults, events),
      timeline(storage, library, tagLibrary, markupModes, events, p.texts),
      history(timeline),
      player(p.players, p.log),
      hotkeys(events, p.scheduler, focus, player),
      exports{player,        timeline,      tagLibrary,  p.media,  p.renderer,
              p.pictures,    p.textMeasure, p.processes, p.panels, p.scheduler,
              p.directories, p.texts,       p.log},
      startUp(dataSync, library, tagLibrary) {
    storage.setCollectionIndex(&index);
    storage.setSavedCopies(&dataSync);
    library.setDeletedTimelineKeeper(&dataSync);
    library.setListStored([this] { dataSync.keepSecondCopy(); });
    dataSync.setRestored([this] {
        library.reloadFiles();
        events.post(events::CollectionDataChanged{});
    });
    tagLibrary.setHotkeyRegistry(&hotkeys);
}

CoreServices::~CoreServices() {
    tagLibrary.setHotkeyRegistry(nullptr);
    library.setListStored({});
    library.setDeletedTimelineKeeper(nullptr);
    storage.setSavedCopies(nullptr);
    storage.setCollectionIndex(nullptr);
}

void CoreServices::start() {
    startUp.run();
    platform.scheduler.background(Priority::utility, [temporary = platform.directories.temporary] {
        removeAbandonedRunFolders(temporary);
    });
}

}  // namespace tembrix
