#include "core/composition/core_services.h"

#include "ports/scheduler.h"

#include "core/export/run_folder.h"
#include "core/notifications/events.h"

namespace tembrix {

CoreServices::CoreServices(const Platform& p, WindowFactory& windowFactory)
    : platform(p),
      health(p.defaults, p.scheduler),
      storage(p.defaults, p.scheduler, p.directories, p.log),
      index(storage, p.bookmarks, p.keychain, p.scheduler, events, p.log),
      dataSync({p.defaults, storage, index, p.bookmarks, p.propertyLists, p.scheduler,
                p.directories, p.log}),
      library(storage, p.bookmarks, p.directories, p.texts, p.log),
      previews(p.media, p.images, p.scheduler, p.directories),
      collections{storage, index, p.bookmarks, p.scheduler, events, p.texts, p.log},
      tagLibrary(collections, p.resources / "collections", p.locale),
      commandKeys(p.defaults, p.log),
      commands(commandKeys),
      projectServices{platform, events, focus, storage, library, collections, tagLibrary, commands},
      windows(projectServices, windowFactory),
      startUp(dataSync, library, tagLibrary) {
    storage.setFlushed([this](bool allWritten) { health.noteDocuments(allWritten); });
    storage.setCollectionIndex(&index);
    storage.setSavedCopies(&dataSync);
    library.setDeletedTimelineKeeper(&dataSync);
    library.setListStored([this] { dataSync.keepSecondCopy(); });
    dataSync.setRestored([this] {
        library.reloadFiles();
        events.post(events::CollectionDataChanged{});
    });
}

CoreServices::~CoreServices() {
    windows.closeAll();
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
