#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/result.h"

#include "core/records/annotation_records.h"

namespace tembrix {

// The six files of a collection's folder as they were found.
class CollectionFiles {
  public:
    explicit CollectionFiles(const std::filesystem::path& folder);

    // Names of the files that are there but cannot be read, and their contents where known.
    const std::vector<std::string>& damaged() const { return damaged_; }
    const std::vector<Bytes>& damagedContents() const { return damagedContents_; }
    // Whether the required files are there and every file that is there can be read.
    bool isWhole() const { return damaged_.empty() && hasRequired(); }

    // Uses another folder's content in place of each damaged file.
    void replaceDamaged(const CollectionFiles& other);
    // Absent if a required file is missing or damaged. The time events and the field are optional.
    std::optional<CollectionData> collection(const std::string& id) const;

  private:
    bool hasRequired() const { return tagGroups_ && tags_ && labelGroups_ && labels_; }
    template <class Record>
    std::optional<Record> read(const std::filesystem::path& folder, const char* name);

    std::vector<std::string> damaged_;
    std::vector<Bytes> damagedContents_;
    std::optional<TagGroupsData> tagGroups_;
    std::optional<TagsData> tags_;
    std::optional<LabelGroupsData> labelGroups_;
    std::optional<LabelsData> labels_;
    std::optional<TimeEventsData> timeEvents_;
    std::optional<PlayField> playField_;
};

// Writes a collection as the files of a folder, which is made.
Result<void> writeCollectionFiles(const std::filesystem::path& folder,
                                  const CollectionData& collection);

}  // namespace tembrix
