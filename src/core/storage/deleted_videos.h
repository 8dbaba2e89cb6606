#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "base/image.h"

#include "core/records/video_records.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

// The entries that were deleted from the library since the program was started, with all that was
// deleted with them. It is kept in the user defaults under other keys, so that each entry can be
// put back exactly until the program ends. The next start removes the rest. Main thread only.
class DeletedVideos {
  public:
    struct Entry {
        VideosData video;
        MatchTitle title;
        std::size_t place = 0;  // in the list
        std::shared_ptr<const ImageBuffer> preview;
    };

    explicit DeletedVideos(InMemoryStorageManager& storage) : storage_(storage) {}

    const std::vector<Entry>& entries() const { return entries_; }  // the latest is the last

    // A deletion calls keep(), stores the list without the entry, and calls removeData(). If the
    // process is killed in between, finish() completes or undoes the deletion at the next start. A
    // document that a restore brings back after a complete deletion stays.
    void keep(Entry entry);
    void removeData(const std::string& videoId);
    // Taking a deletion back calls restoreData(), stores the list with the entry, and calls
    // forget().
    void restoreData(const std::string& videoId);
    void forget(const std::string& videoId);

    // The deletions of the last run are final; the stored list says which took place.
    void finish(const std::vector<VideosData>& list);
    // Forgets the entries that are in the list, because the list was replaced.
    void listReplaced(const std::vector<VideosData>& list);
    void forgetAll();

  private:
    void removeKept(const std::string& videoId);

    InMemoryStorageManager& storage_;
    std::vector<Entry> entries_;
};

}  // namespace tembrix
