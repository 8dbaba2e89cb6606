#include "core/composition/core_services.h"

#include "ports/scheduler.h"

#include "core/export/run_folder.h"
#include "core/notifications/events.h"

namespace tembrix {

CoreServices::CoreServices(const Platform& p, WindowFactory& windowFactory)
    : platform(p),
      storage(p.defaults, p.scheduler, p.directories, p.log),
      index(storage, p.bookmarks, p.keychain, p.scheduler, events, p.log),
      dataSync({p.defaults, storage, index, p.bookmarks, p.propertyLists, p.scheduler,
                p.directories, p.log}),
      library(storage, p.bookmarks, p.directories, p.texts, p.log),
      previews(p.media, p.images, p.scheduler, p.directories),
      collections{storage, index, p.bookmarks, p.scheduler, events, p.texts, p.log},
      tagLibrary(collections, p.resources / "collections", p.locale),
      projectServices{platform, events, focus, storage, library, collections, tagLibrary},
      windows(projectServices, windowFactory) {
    storage.setCollectionIndex(&index);
    library.setDeletedTimelineKeeper(&dataSync);
    dataSync.setRestored([this] {
        library.reloadFiles();
        events.post(events::CollectionDataChanged{});
    });
}

CoreServices::~CoreServices() {
    windows.closeAll();
    library.setDeletedTimelineKeeper(nullptr);
    storage.setCollectionIndex(nullptr);
}

void CoreServices::start() {
    dataSync.syncOnLaunch();
    library.start();
    tagLibrary.start();
    platform.scheduler.background(Priority::utility, [temporary = platform.directories.temporary] {
        removeAbandonedRunFolders(temporary);
    });
}

}  // namespace tembrix
