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

#include "core/collections/collections_bookmarks_manager.h"
#include "core/notifications/event_bus.h"
#include "core/records/annotation_records.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

// What a CustomCollectionManager works with; one set serves the process.
struct CollectionServices {
    InMemoryStorageManager& storage;
    CollectionsBookmarksManager& index;
    Bookmarks& bookmarks;
    Scheduler& scheduler;
    EventBus& events;
    const Texts& texts;
    Log& log;
};

// One user collection in hand: loaded, made or changed. Edits change the object only;
// saveCollection stores it, and the operations on the play field save by themselves. Not shared;
// made per use. Main thread only, but for loadCollection, which may run on any thread while nobody
// else uses the object.
class CustomCollectionManager {
  public:
    explicit CustomCollectionManager(CollectionServices& services);  // new
    CustomCollectionManager(CollectionServices& services,
                            const CollectionBookmark& existing);  // loads

    bool loadCollection(const std::string& name);

    const std::string& collectionName() const { return collectionName_; }
    const std::string& collectionID() const { return collectionID_; }
    const CollectionLists& lists() const { return lists_; }
    const std::optional<PlayField>& playField() const { return playField_; }
    bool isEditingExisting() const { return isEditingExisting_; }

    // Tells of each change of what the object holds.
    Subscription observeChanges(std::function<void()> observer);

    // Takes effect with the next save, which makes the name unique.
    void setCollectionName(const std::string& name);

    TagGroup addTagGroup(const std::string& name);
    void renameTagGroup(const std::string& id, const std::string& name);
    // Removes the tags that no other group lists, too.
    void deleteTagGroup(const std::string& id);

    // A hot key that another tag holds is left out. Absent without such a group; nothing is added.
    std::optional<Tag> addTag(const TagFormData& form, const std::string& groupId);
    // False, and nothing changes, if another tag holds the form's hot key. A new name reaches the
    // stamps with the next save.
    bool updateTag(const std::string& id, const TagFormData& form);
    bool setTagMapEnabled(const std::string& id, bool enabled);  // false: no such tag
    void deleteTag(const std::string& id);
    bool isHotkeyUsed(const std::optional<std::string>& hotkey,
                      const std::optional<std::string>& exceptTagId = {}) const;

    LabelGroupData addLabelGroup(const std::string& name);
    void renameLabelGroup(const std::string& id, const std::string& name);
    // Removes the labels that no other group lists, too.
    void deleteLabelGroup(const std::string& id);

    // Without such a group the label belongs to none.
    Label addLabel(const std::string& name, const std::string& description,
                   const std::string& groupId);
    void updateLabel(const std::string& id, const std::string& name,
                     const std::string& description);
    void deleteLabel(const std::string& id);

    std::string addTimeEvent(const std::string& name);
    void updateTimeEvent(const std::string& id, const std::string& name);
    void deleteTimeEvent(const std::string& id);

    // Stores the collection, lists it in the index and tells the program.
    bool saveCollection();

    // Copies the picture into the program's own folder, and saves. False: nothing changed.
    bool setFieldImage(const std::filesystem::path& image);
    // The picture goes in the background; the field and the map flags then, followed by a save.
    void removeField();
    void setFieldSize(double width, double height);

  private:
    struct ChangedTag {
        std::string id;
        std::string newName;
    };

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
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
