#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/color.h"

namespace tembrix {

// A tag of a collection; a button in the tag panel.
struct Tag {
    std::string id;  // unique in its collection; all lookups use it
    std::optional<std::string>
        primaryID;  // the identity at first creation; carried, never looked up
    std::string name;
    std::string description;
    std::string color;             // hex color text
    double defaultTimeBefore = 0;  // seconds before the press at which a stamp starts
    double defaultTimeAfter = 0;   // seconds after the press at which it ends
    std::optional<std::string> collection;
    std::vector<std::string> lablesGroup;  // ids of the label groups offered
    std::optional<std::string> hotkey;
    std::optional<std::map<std::string, std::string>> labelHotkeys;  // label id to hot key text
    std::optional<bool> mapEnabled;  // marking asks for a position on the field
    std::optional<bool> isInterval;  // one press starts an interval, the next one ends it

    bool operator==(const Tag&) const = default;
};

struct TagGroup {
    std::string id;
    std::string name;
    std::vector<std::string> tags;  // ids in display order
    bool operator==(const TagGroup&) const = default;
};

// A label that can be attached to a stamp.
struct Label {
    std::string id;
    std::string name;
    std::string description;
    bool operator==(const Label&) const = default;
};

struct LabelGroupData {
    std::string id;
    std::string name;
    std::vector<std::string> lables;  // ids in display order
    bool operator==(const LabelGroupData&) const = default;
};

// A named phase or event of the match that can be attached to stamps.
struct TimeEvent {
    std::string id;
    std::string name;
    bool operator==(const TimeEvent&) const = default;
};

// The picture of a playing field. Stamp positions are in its coordinate space of width by height.
struct PlayField {
    std::string id;
    std::string name;
    std::string imagePath;
    double width = 0;
    double height = 0;
    std::optional<Bytes> imageBookmark;
    bool operator==(const PlayField&) const = default;
};

// The five lists of a collection, as the tag library stores and merges them.
struct CollectionLists {
    std::vector<Tag> tags;
    std::vector<TagGroup> tagGroups;
    std::vector<LabelGroupData> labelGroups;
    std::vector<Label> labels;
    std::vector<TimeEvent> timeEvents;
    bool operator==(const CollectionLists&) const = default;
};

// A complete collection in one document.
struct CollectionData {
    std::string id;
    std::vector<TagGroup> tagGroups;
    std::vector<Tag> tags;
    std::vector<LabelGroupData> labelGroups;
    std::vector<Label> labels;
    std::vector<TimeEvent> timeEvents;
    std::optional<PlayField> playField;

    CollectionLists lists() const { return {tags, tagGroups, labelGroups, labels, timeEvents}; }
    bool operator==(const CollectionData&) const = default;
};

// The files of a collection: one list each, under its own key.
struct TagGroupsData {
    std::vector<TagGroup> tagGroups;
    bool operator==(const TagGroupsData&) const = default;
};
struct TagsData {
    std::vector<Tag> tags;
    bool operator==(const TagsData&) const = default;
};
struct LabelGroupsData {
    std::vector<LabelGroupData> labelGroups;
    bool operator==(const LabelGroupsData&) const = default;
};
struct LabelsData {
    std::vector<Label> labels;
    bool operator==(const LabelsData&) const = default;
};
struct TimeEventsData {
    std::vector<TimeEvent> events;
    bool operator==(const TimeEventsData&) const = default;
};

// An entry of the collection index.
struct CollectionInfo {
    std::string id;
    std::string name;
    bool operator==(const CollectionInfo&) const = default;
};

// The older collection record, with a bookmark per file.
struct CollectionBookmark {
    std::string id;
    std::string name;
    Bytes tagGroupsBookmark;
    Bytes tagsBookmark;
    Bytes labelGroupsBookmark;
    Bytes labelsBookmark;
    Bytes timeEventsBookmark;
    std::optional<Bytes> playFieldBookmark;
    bool operator==(const CollectionBookmark&) const = default;
};

// The kind of the active collection.
struct TagCollection {
    enum class Kind { standard, user };
    Kind kind = Kind::standard;
    std::string name;  // of a user collection
    std::string id;    // of a user collection; unlike the name it never changes

    static TagCollection standard() { return {}; }
    static TagCollection user(std::string name, std::string id) {
        return {Kind::user, std::move(name), std::move(id)};
    }
    bool isUser() const { return kind == Kind::user; }
    bool operator==(const TagCollection&) const = default;
};

// The fields of a tag while it is edited.
struct TagFormData {
    std::string name;
    std::string description;
    Color color;
    std::string hexColor;
    double defaultTimeBefore = 0;
    double defaultTimeAfter = 0;
    std::vector<std::string> selectedLabelGroups;
    std::optional<std::string> hotkey;
    std::map<std::string, std::string> labelHotkeys;
    bool mapEnabled = false;
    bool isInterval = false;
    bool operator==(const TagFormData&) const = default;
};

TagFormData tagFormData(const Tag& tag);

}  // namespace tembrix
