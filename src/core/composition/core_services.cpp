#include "core/composition/core_services.h"

#include <string>

#include "ports/panels.h"
#include "ports/scheduler.h"
#include "ports/texts.h"
#include "ports/user_defaults.h"

#include "core/notifications/events.h"

namespace tembrix {

namespace {

Platform withPanels(const Platform& p, Panels& panels) {
    return {
        .log = p.log,
        .directories = p.directories,
        .resources = p.resources,
        .scheduler = p.scheduler,
        .defaults = p.defaults,
        .keychain = p.keychain,
        .bookmarks = p.bookmarks,
        .propertyLists = p.propertyLists,
        .texts = p.texts,
        .locale = p.locale,
        .panels = panels,
        .processes = p.processes,
        .players = p.players,
        .media = p.media,
        .renderer = p.renderer,
        .images = p.images,
        .pictures = p.pictures,
        .textMeasure = p.textMeasure,
    };
}

}  // namespace

CoreServices::CoreServices(const Platform& p, WindowFactory& windowFactory)
    : panels(p.panels, [this] { return windows.project() ? &windows.project()->player : nullptr; }),
      platform(withPanels(p, panels)),
      settings(p.defaults, p.log),
      health(p.defaults, p.scheduler),
      storage(p.defaults, p.scheduler, p.directories, p.log),
      index(storage, p.bookmarks, p.keychain, p.scheduler, events, p.log),
      dataSync({p.defaults, storage, index, p.bookmarks, p.propertyLists, p.scheduler,
                p.directories, p.log}),
      library(storage, p.bookmarks, p.directories, p.texts, p.log),
      previews(p.media, p.images, p.scheduler, p.directories),
      products(panels, p.scheduler, p.texts, p.log, library, settings),
      collections{storage, index, p.bookmarks, p.scheduler, events, p.texts, p.log},
      tagLibrary(collections, p.resources / "collections", p.locale),
      commandKeys(p.defaults, p.log),
      commands(commandKeys, settings),
      projectServices{platform, events,      settings,   focus,    storage,
                      library,  collections, tagLibrary, commands, products},
      windows(projectServices, windowFactory),
      startUp(dataSync, library, tagLibrary) {
    languageChanged_ = p.texts.changed.observe([this] {
        tagLibrary.followLanguage();
        windows.retitle();
    });
    storage.setFlushed([this](bool allWritten) { health.noteDocuments(allWritten); });
    incidents_ = health.observe(
        [this](const DefaultsStatus& status) { dataSync.noteIncidents(status.incidents); });
    storage.setCollectionIndex(&index);
    storage.setSavedCopies(&dataSync);
    library.setDeletedTimelineKeeper(&dataSync);
    library.setListStored([this] { dataSync.keepSecondCopy(); });
    dataSync.setReplacingTimeline([this](const std::string& videoId) {
        if (windows.project() && windows.project()->videoId() == videoId)
            windows.closeAll();
    });
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
    products.resume(platform.directories.temporary);
}

}  // namespace tembrix
