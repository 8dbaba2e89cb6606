#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "core/records/annotation_records.h"

namespace tembrix {

// Where the records of merged lists stand, by id.
struct RecordPlaces {
    using Map = std::unordered_map<std::string, std::size_t>;
    Map tags, tagGroups, labelGroups, labels, timeEvents;
    Map groupOfLabel;  // label id to the first group that lists it
};

// Joins the lists of a further collection to merged ones; what they hold of an id already stays.
void addCollection(CollectionLists& merged, RecordPlaces& places, const CollectionLists& more);

// The same for a collection that counts before the others: its records take the place of those.
void putCollection(CollectionLists& merged, RecordPlaces& places, const CollectionLists& first);

}  // namespace tembrix
