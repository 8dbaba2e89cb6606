#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "core/records/annotation_records.h"

namespace tembrix {

// The indices of the records in merged lists, by id.
struct RecordPlaces {
    using Map = std::unordered_map<std::string, std::size_t>;
    Map tags, tagGroups, labelGroups, labels, timeEvents;
    Map groupOfLabel;  // label id to the first group that lists it
};

// Adds the lists of a collection to merged ones. Records whose id is already there are not added.
void addCollection(CollectionLists& merged, RecordPlaces& places, const CollectionLists& more);

// Adds the lists of a collection that has priority: its records replace those with the same id.
void putCollection(CollectionLists& merged, RecordPlaces& places, const CollectionLists& first);

}  // namespace tembrix
