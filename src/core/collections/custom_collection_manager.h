#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/signal.h"

#include "ports/bookmarks.h"
#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/background/background_work.h"
#include "core/collections/collections_bookmarks_manager.h"
#include "core/notifications/event_bus.h"
#include "core/records/annotation_records.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

// The services that a CustomCollectionManager uses.
struct CollectionServices {
    InMemoryStorageManager& storage;
    CollectionsBookmarksManager& index;
    Bookmarks& bookmarks;
    Scheduler& scheduler;
    EventBus& events;
    const Texts& texts;
    Log& log;
};

// Loads, creates and edits one user collection. Edits only change the object; saveCollection()
// stores it. The functions for the play field save immediately. Created for each use and not
// shared. Main thread only, except for loadCollection(), which may run on any thread while no one
// else uses the object.
class CustomCollectionManager {
  public:
    explicit CustomCollectionManager(CollectionServices& services);  // a new collection
    CustomCollectionManager(CollectionServices& services,
                            const CollectionBookmark& existing);  // loads the collection

    bool loadCollection(const std::string& name);

    const std::string& collectionName() const { return collectionName_; }
    const std::string& collectionID() const { return collectionID_; }
    const CollectionLists& lists() const { return lists_; }
    const std::optional<PlayField>& playField() const { return playField_; }
    bool isEditingExisting() const { return isEditingExisting_; }

    // Notifies of each change of the collection.
    Subscription observeChanges(std::function<void()> observer);

    // Used by the next save, which makes the name unique.
    void setCollectionName(const std::string& name);

    TagGroup addTagGroup(const std::string& name);
    void renameTagGroup(const std::string& id, const std::string& name);
    // Also removes the tags that are in no other group.
    void deleteTagGroup(const std::string& id);

    // A hot key that is used by another tag is left out. Absent if there is no such group; then
    // nothing is added.
    std::optional<Tag> addTag(const TagFormData& form, const std::string& groupId);
    // Returns false and changes nothing if another tag uses the hot key of the form. Existing
    // stamps get a new name with the next save.
    bool updateTag(const std::string& id, const TagFormData& form);
    bool setTagMapEnabled(const std::string& id, bool enabled);  // false if there is no such tag
    void deleteTag(const std::string& id);
    bool isHotkeyUsed(const std::optional<std::string>& hotkey,
                      const std::optional<std::string>& exceptTagId = {}) const;

    LabelGroupData addLabelGroup(const std::string& name);
    void renameLabelGroup(const std::string& id, const std::string& name);
    // Also removes the labels that are in no other group.
    void deleteLabelGroup(const std::string& id);

    // If there is no such group, the label is added to none.
    Label addLabel(const std::string& name, const std::string& description,
                   const std::string& groupId);
    void updateLabel(const std::string& id, const std::string& name,
                     const std::string& description);
    void deleteLabel(const std::string& id);

    std::string addTimeEvent(const std::string& name);
    void updateTimeEvent(const std::string& id, const std::string& name);
    void deleteTimeEvent(const std::string& id);

    // Stores the collection, adds it to the index and notifies the program.
    bool saveCollection();

    // Copies the picture into the program's own folder and saves. Returns false if nothing has
    // changed.
    bool setFieldImage(const std::filesystem::path& image);
    // Removes the field and the map flags and saves, then deletes the picture in the background.
    void removeField();
    void setFieldSize(double width, double height);

  private:
    struct ChangedTag {
        std::string id;
        std::string newName;
    };

    bool load(const CollectionInfo& info);
    std::string uniqueName(const std::string& wanted);
    void recordRename(const std::string& id, const std::string& name);
    void dropTag(const std::string& id);
    void dropLabel(const std::string& id);
    std::filesystem::path fieldFolder() const;
    bool isPictureOfAnother(const std::string& name) const;
    std::string fieldFileStem() const;
    bool writeFieldRecord(const PlayField& field, const std::string& stem) const;

    CollectionServices& services_;
    CollectionLists lists_;
    std::optional<PlayField> playField_;
    std::string collectionName_;
    std::string collectionID_;
    std::string originalName_;
    bool isEditingExisting_ = false;
    std::vector<ChangedTag> changedTags_;
    Signal<> changed_;
    BackgroundWork work_;
};

}  // namespace tembrix
