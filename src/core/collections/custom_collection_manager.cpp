#include "core/collections/custom_collection_manager.h"

#include <algorithm>
#include <set>
#include <utility>

#include "base/utf8_text.h"
#include "base/uuid.h"

#include "core/keyboard/hot_key_manager.h"
#include "core/notifications/events.h"

namespace tembrix {

namespace {

template <class Record>
Record* findById(std::vector<Record>& list, const std::string& id) {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const Record& record) { return record.id == id; });
    return found == list.end() ? nullptr : &*found;
}

template <class Record>
void eraseById(std::vector<Record>& list, const std::string& id) {
    std::erase_if(list, [&](const Record& record) { return record.id == id; });
}

// The members of the group that are in no other group.
template <class Group>
std::vector<std::string> ownMembers(const std::vector<Group>& groups, const std::string& id,
                                    std::vector<std::string> Group::*members) {
    std::set<std::string> elsewhere;
    std::vector<std::string> result;
    for (const auto& group : groups)
        if (group.id != id)
            elsewhere.insert((group.*members).begin(), (group.*members).end());
    for (const auto& group : groups)
        if (group.id == id)
            for (const auto& member : group.*members)
                if (!elsewhere.contains(member))
                    result.push_back(member);
    return result;
}

}  // namespace

CustomCollectionManager::CustomCollectionManager(CollectionServices& services)
    : services_(services),
      collectionName_(services.texts.text("myCollection")),
      collectionID_(freshId()),
      work_(services.scheduler) {}

CustomCollectionManager::CustomCollectionManager(CollectionServices& services,
                                                 const CollectionBookmark& existing)
    : services_(services),
      collectionName_(existing.name),
      collectionID_(existing.id),
      originalName_(existing.name),
      isEditingExisting_(true),
      work_(services.scheduler) {
    const auto infos = services_.index.collections();
    const auto info = std::find_if(infos.begin(), infos.end(), [&](const CollectionInfo& one) {
        return one.id == existing.id;
    });
    if (info == infos.end() ? loadCollection(existing.name) : load(*info))
        originalName_ = collectionName_;
}

Subscription CustomCollectionManager::observeChanges(std::function<void()> observer) {
    return changed_.observe(std::move(observer));
}

bool CustomCollectionManager::loadCollection(const std::string& name) {
    const auto infos = services_.index.collections();
    const auto info = std::find_if(infos.begin(), infos.end(),
                                   [&](const CollectionInfo& one) { return one.name == name; });
    if (info == infos.end()) {
        services_.log.line("❌ CustomCollectionManager: Collection '" + name + "' not found");
        return false;
    }
    return load(*info);
}

bool CustomCollectionManager::load(const CollectionInfo& info) {
    auto data = services_.storage.loadCollection(info.id);
    if (!data) {
        services_.log.line("❌ CustomCollectionManager: Failed to load collection '" + info.name +
                           "'");
        return false;
    }
    collectionID_ = info.id;
    collectionName_ = info.name;
    lists_ = data->lists();
    playField_ = std::move(data->playField);
    changed_.emit();
    services_.log.line("✅ CustomCollectionManager: Successfully loaded collection '" + info.name +
                       "'");
    return true;
}

void CustomCollectionManager::setCollectionName(const std::string& name) {
    collectionName_ = name;
    changed_.emit();
}

TagGroup CustomCollectionManager::addTagGroup(const std::string& name) {
    const TagGroup group{freshId(), name, {}};
    lists_.tagGroups.push_back(group);
    changed_.emit();
    return group;
}

void CustomCollectionManager::renameTagGroup(const std::string& id, const std::string& name) {
    if (auto* group = findById(lists_.tagGroups, id)) {
        group->name = name;
        changed_.emit();
    }
}

void CustomCollectionManager::deleteTagGroup(const std::string& id) {
    for (const auto& tag : ownMembers(lists_.tagGroups, id, &TagGroup::tags))
        dropTag(tag);
    eraseById(lists_.tagGroups, id);
    changed_.emit();
}

std::optional<Tag> CustomCollectionManager::addTag(const TagFormData& form,
                                                   const std::string& groupId) {
    auto* group = findById(lists_.tagGroups, groupId);
    if (!group)
        return std::nullopt;
    const auto id = freshId();
    const bool takesHotkey = form.hotkey && !form.hotkey->empty() && !isHotkeyUsed(form.hotkey);
    const Tag tag{
        .id = id,
        .primaryID = id,
        .name = form.name,
        .description = form.description,
        .color = form.hexColor,
        .defaultTimeBefore = form.defaultTimeBefore,
        .defaultTimeAfter = form.defaultTimeAfter,
        .collection = collectionID_,
        .lablesGroup = {},
        .hotkey = takesHotkey ? form.hotkey : std::nullopt,
        .labelHotkeys = std::map<std::string, std::string>{},
        .mapEnabled = std::nullopt,
        .isInterval = form.isInterval,
    };
    lists_.tags.push_back(tag);
    group->tags.push_back(id);
    changed_.emit();
    return tag;
}

bool CustomCollectionManager::updateTag(const std::string& id, const TagFormData& form) {
    auto* tag = findById(lists_.tags, id);
    if (!tag || isHotkeyUsed(form.hotkey, id))
        return false;
    if (tag->name != form.name)
        recordRename(id, form.name);
    tag->name = form.name;
    tag->description = form.description;
    tag->color = form.hexColor;
    tag->defaultTimeBefore = form.defaultTimeBefore;
    tag->defaultTimeAfter = form.defaultTimeAfter;
    tag->lablesGroup = form.selectedLabelGroups;
    tag->hotkey = form.hotkey;
    tag->labelHotkeys = form.labelHotkeys;
    tag->mapEnabled = form.mapEnabled;
    tag->isInterval = form.isInterval;
    changed_.emit();
    return true;
}

void CustomCollectionManager::recordRename(const std::string& id, const std::string& name) {
    if (auto* entry = findById(changedTags_, id))
        entry->newName = name;
    else
        changedTags_.push_back({id, name});
}

bool CustomCollectionManager::setTagMapEnabled(const std::string& id, bool enabled) {
    auto* tag = findById(lists_.tags, id);
    if (!tag)
        return false;
    tag->mapEnabled = enabled;
    changed_.emit();
    return true;
}

void CustomCollectionManager::dropTag(const std::string& id) {
    for (auto& group : lists_.tagGroups)
        std::erase(group.tags, id);
    eraseById(lists_.tags, id);
}

void CustomCollectionManager::deleteTag(const std::string& id) {
    dropTag(id);
    changed_.emit();
}

bool CustomCollectionManager::isHotkeyUsed(const std::optional<std::string>& hotkey,
                                           const std::optional<std::string>& exceptTagId) const {
    return tembrix::isHotkeyUsed(lists_.tags, hotkey, exceptTagId);
}

LabelGroupData CustomCollectionManager::addLabelGroup(const std::string& name) {
    const LabelGroupData group{freshId(), name, {}};
    lists_.labelGroups.push_back(group);
    changed_.emit();
    return group;
}

void CustomCollectionManager::renameLabelGroup(const std::string& id, const std::string& name) {
    if (auto* group = findById(lists_.labelGroups, id)) {
        group->name = name;
        changed_.emit();
    }
}

void CustomCollectionManager::deleteLabelGroup(const std::string& id) {
    for (const auto& label : ownMembers(lists_.labelGroups, id, &LabelGroupData::lables))
        dropLabel(label);
    for (auto& tag : lists_.tags)
        std::erase(tag.lablesGroup, id);
    eraseById(lists_.labelGroups, id);
    changed_.emit();
}

Label CustomCollectionManager::addLabel(const std::string& name, const std::string& description,
                                        const std::string& groupId) {
    const Label label{freshId(), name, description};
    lists_.labels.push_back(label);
    if (auto* group = findById(lists_.labelGroups, groupId))
        group->lables.push_back(label.id);
    changed_.emit();
    return label;
}

void CustomCollectionManager::updateLabel(const std::string& id, const std::string& name,
                                          const std::string& description) {
    if (auto* label = findById(lists_.labels, id)) {
        *label = {id, name, description};
        changed_.emit();
    }
}

void CustomCollectionManager::dropLabel(const std::string& id) {
    for (auto& group : lists_.labelGroups)
        std::erase(group.lables, id);
    for (auto& tag : lists_.tags)
        if (tag.labelHotkeys)
            tag.labelHotkeys->erase(id);
    eraseById(lists_.labels, id);
}

void CustomCollectionManager::deleteLabel(const std::string& id) {
    dropLabel(id);
    changed_.emit();
}

std::string CustomCollectionManager::addTimeEvent(const std::string& name) {
    const TimeEvent event{freshId(), name};
    lists_.timeEvents.push_back(event);
    changed_.emit();
    return event.id;
}

void CustomCollectionManager::updateTimeEvent(const std::string& id, const std::string& name) {
    if (auto* event = findById(lists_.timeEvents, id)) {
        event->name = name;
        changed_.emit();
    }
}

void CustomCollectionManager::deleteTimeEvent(const std::string& id) {
    eraseById(lists_.timeEvents, id);
    changed_.emit();
}

std::string CustomCollectionManager::uniqueName(const std::string& wanted) {
    std::set<std::string> others;
    for (const auto& info : services_.index.collections())
        if (info.id != collectionID_)
            others.insert(info.name);
    if (isEditingExisting_ && wanted == originalName_)
        return wanted;
    auto name = wanted;
    for (int counter = 1; others.contains(name); ++counter)
        name = wanted + " (" + std::to_string(counter) + ")";
    return name;
}

bool CustomCollectionManager::saveCollection() {
    const auto name = trimmed(collectionName_);
    if (!name.empty() && name != originalName_)
        collectionName_ = uniqueName(name);
    else
        collectionName_ = originalName_.empty() ? collectionID_ : originalName_;
    services_.storage.saveCollection({.id = collectionID_,
                                      .tagGroups = lists_.tagGroups,
                                      .tags = lists_.tags,
                                      .labelGroups = lists_.labelGroups,
                                      .labels = lists_.labels,
                                      .timeEvents = lists_.timeEvents,
                                      .playField = playField_});
    services_.index.addOrUpdateCollection(collectionID_, collectionName_);
    originalName_ = collectionName_;
    isEditingExisting_ = true;
    services_.scheduler.onMain([&events = services_.events, saved = collectionName_] {
        events.post(events::CollectionDataChanged{saved});
    });
    // Observers may call this object.
    for (const auto& tag : std::exchange(changedTags_, {}))
        services_.events.post(events::TagUpdated{tag.id, tag.newName});
    changed_.emit();
    return true;
}

}  // namespace tembrix
