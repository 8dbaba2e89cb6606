#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "core/collections/custom_collection_manager.h"
#include "core/collections/tag_library_manager.h"
#include "fakes/captured_log.h"
#include "fakes/fake_bookmarks.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_keychain.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {

inline Tag makeTag(const std::string& id, const std::string& name,
                   std::optional<std::string> hotkey = {}) {
    Tag tag;
    tag.id = id;
    tag.name = name;
    tag.color = "0000FF";
    tag.hotkey = std::move(hotkey);
    return tag;
}

// The collections with fakes and a real folder. restart() simulates a new start of the program.
struct CollectionsFixture : testing::Test {
    TempFolder folder;
    VirtualScheduler scheduler;
    MemoryUserDefaults defaults;
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;
    FakeTexts texts;
    CapturedLog log;
    EventBus events;
    std::unique_ptr<InMemoryStorageManager> storage;
    std::unique_ptr<CollectionsBookmarksManager> index;
    std::unique_ptr<CollectionServices> services;

    CollectionsFixture() { restart(); }

    void restart() {
        services.reset();
        index.reset();
        storage = std::make_unique<InMemoryStorageManager>(defaults, scheduler,
                                                           folder.directories(), log);
        index = std::make_unique<CollectionsBookmarksManager>(*storage, bookmarks, keychain,
                                                              scheduler, events, log);
        storage->setCollectionIndex(index.get());
        services = std::make_unique<CollectionServices>(
            CollectionServices{*storage, *index, bookmarks, scheduler, events, texts, log});
    }

    // Saves a user collection with one group and the given tags.
    std::string saveCollection(const std::string& name, const std::vector<std::string>& tags = {}) {
        CustomCollectionManager collection(*services);
        collection.setCollectionName(name);
        const auto group = collection.addTagGroup("Group");
        for (const auto& tag : tags) {
            TagFormData form;
            form.name = tag;
            form.hexColor = "0000FF";
            collection.addTag(form, group.id);
        }
        collection.saveCollection();
        scheduler.run();
        return collection.collectionID();
    }

    template <class Event>
    std::shared_ptr<std::vector<Event>> record() {
        auto seen = std::make_shared<std::vector<Event>>();
        subscriptions.push_back(
            events.observe<Event>([seen](const Event& event) { seen->push_back(event); }));
        return seen;
    }
    std::vector<Subscription> subscriptions;
};

}  // namespace tembrix
