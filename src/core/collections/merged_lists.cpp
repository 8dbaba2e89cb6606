#include "core/collections/merged_lists.h"

#include <string_view>
#include <unordered_set>

namespace tembrix {

namespace {

template <class Record>
void addRecords(std::vector<Record>& list, RecordPlaces::Map& places,
                const std::vector<Record>& more) {
    for (const auto& record : more)
        if (places.try_emplace(record.id, list.size()).second)
            list.push_back(record);
}

template <class Record>
void putRecords(std::vector<Record>& list, RecordPlaces::Map& places,
                const std::vector<Record>& first) {
    std::unordered_set<std::string_view> seen;
    for (const auto& record : first) {
        if (!seen.insert(record.id).second)
            continue;
        const auto [place, isNew] = places.try_emplace(record.id, list.size());
        if (isNew)
            list.push_back(record);
        else
            list[place->second] = record;
    }
}

void findGroups(RecordPlaces& places, const std::vector<LabelGroupData>& groups, std::size_t from) {
    for (std::size_t i = from; i < groups.size(); ++i)
        for (const auto& label : groups[i].lables)
            places.groupOfLabel.try_emplace(label, i);
}

}  // namespace

void addCollection(CollectionLists& merged, RecordPlaces& places, const CollectionLists& more) {
    const std::size_t known = merged.labelGroups.size();
    addRecords(merged.tags, places.tags, more.tags);
    addRecords(merged.tagGroups, places.tagGroups, more.tagGroups);
    addRecords(merged.labelGroups, places.labelGroups, more.labelGroups);
    addRecords(merged.labels, places.labels, more.labels);
    addRecords(merged.timeEvents, places.timeEvents, more.timeEvents);
    findGroups(places, merged.labelGroups, known);
}

void putCollection(CollectionLists& merged, RecordPlaces& places, const CollectionLists& first) {
    putRecords(merged.tags, places.tags, first.tags);
    putRecords(merged.tagGroups, places.tagGroups, first.tagGroups);
    putRecords(merged.labelGroups, places.labelGroups, first.labelGroups);
    putRecords(merged.labels, places.labels, first.labels);
    putRecords(merged.timeEvents, places.timeEvents, first.timeEvents);
    places.groupOfLabel.clear();
    findGroups(places, merged.labelGroups, 0);
}

}  // namespace tembrix
