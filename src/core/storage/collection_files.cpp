#include "core/storage/collection_files.h"

#include <cerrno>
#include <utility>

#include "base/files.h"
#include "base/json_style.h"

#include "core/records/codec.h"
#include "core/storage/data_layout.h"

namespace tembrix {

template <class Record>
std::optional<Record> CollectionFiles::read(const std::filesystem::path& folder, const char* name) {
    const auto content = readFile(folder / name);
    if (!content && (content.error().code == ENOENT || content.error().code == ENOTDIR))
        return std::nullopt;
    auto record = content ? decode<Record>(*content).optional() : std::nullopt;
    if (!record)
        damaged_.emplace_back(name);
    if (!record && content)
        damagedContents_.push_back(*content);
    return record;
}

CollectionFiles::CollectionFiles(const std::filesystem::path& folder)
    : tagGroups_(read<TagGroupsData>(folder, layout::tagGroupsFile)),
      tags_(read<TagsData>(folder, layout::tagsFile)),
      labelGroups_(read<LabelGroupsData>(folder, layout::labelGroupsFile)),
      labels_(read<LabelsData>(folder, layout::labelsFile)),
      timeEvents_(read<TimeEventsData>(folder, layout::timeEventsFile)),
      playField_(read<PlayField>(folder, layout::playFieldFile)) {}

void CollectionFiles::replaceDamaged(const CollectionFiles& other) {
    const auto replace = [this](auto& mine, const auto& theirs, const char* name) {
        const auto isThisFile = [&](const std::string& one) { return one == name; };
        if (theirs && std::erase_if(damaged_, isThisFile) > 0)
            mine = theirs;
    };
    replace(tagGroups_, other.tagGroups_, layout::tagGroupsFile);
    replace(tags_, other.tags_, layout::tagsFile);
    replace(labelGroups_, other.labelGroups_, layout::labelGroupsFile);
    replace(labels_, other.labels_, layout::labelsFile);
    replace(timeEvents_, other.timeEvents_, layout::timeEventsFile);
    replace(playField_, other.playField_, layout::playFieldFile);
}

std::optional<CollectionData> CollectionFiles::collection(const std::string& id) const {
    if (!hasRequired())
        return std::nullopt;
    CollectionData collection;
    collection.id = id;
    collection.tagGroups = tagGroups_->tagGroups;
    collection.tags = tags_->tags;
    collection.labelGroups = labelGroups_->labelGroups;
    collection.labels = labels_->labels;
    if (timeEvents_)
        collection.timeEvents = timeEvents_->events;
    collection.playField = playField_;
    return collection;
}

Result<void> writeCollectionFiles(const std::filesystem::path& folder,
                                  const CollectionData& collection) {
    auto outcome = makeFolder(folder);
    if (!outcome)
        return outcome;
    const auto write = [&](const char* name, const auto& record) {
        const auto content = encode(record, JsonStyle::pretty);
        if (content && fileContains(folder / name, *content))
            return;
        auto written = content ? replaceFile(folder / name, *content) : content.error();
        if (outcome && !written)
            outcome = std::move(written);
    };
    write(layout::tagGroupsFile, TagGroupsData{collection.tagGroups});
    write(layout::tagsFile, TagsData{collection.tags});
    write(layout::labelGroupsFile, LabelGroupsData{collection.labelGroups});
    write(layout::labelsFile, LabelsData{collection.labels});
    // The files of time events and field remain if the collection no longer has any. When reading,
    // the working copy has priority.
    if (!collection.timeEvents.empty())
        write(layout::timeEventsFile, TimeEventsData{collection.timeEvents});
    if (collection.playField)
        write(layout::playFieldFile, *collection.playField);
    return outcome;
}

}  // namespace tembrix
