#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/result.h"

#include "core/records/annotation_records.h"

namespace tembrix {

// The six files in a collection's folder, as they were read.
class CollectionFiles {
  public:
    explicit CollectionFiles(const std::filesystem::path& folder);

    // The names of the files that cannot be read, and the contents of those whose bytes can be.
    const std::vector<std::string>& damaged() const { return damaged_; }
    const std::vector<Bytes>& damagedContents() const { return damagedContents_; }
    // Whether all required files exist and all existing files can be read.
    bool isWhole() const { return damaged_.empty() && hasRequired(); }

    // Replaces each damaged file by the content from another folder.
    void replaceDamaged(const CollectionFiles& other);
    // Absent if a required file is missing or damaged. Time events and field are optional.
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

// Writes a collection to the files of a folder, which is created if necessary. Files that have this
// content already are left alone. The first failure is returned.
Result<void> writeCollectionFiles(const std::filesystem::path& folder,
                                  const CollectionData& collection);

}  // namespace tembrix
