#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/published.h"
#include "base/uuid.h"

#include "ports/scheduler.h"
#include "ports/user_defaults.h"

#include "core/collections/tag_library_manager.h"
#include "core/marking/stamp_items_selection.h"
#include "core/records/timeline_records.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// What an edit sheet edits.
struct StampEdit {
    Uuid line;
    Uuid stamp;
    StampEditSheetType type;
};

// Edits the labels or the time events of a stamp from its context menu. The ids of the stamp and
// its line are kept in the user defaults, where the edit sheet reads them.
class StampEditing {
  public:
    static constexpr double sheetDelay = 0.1;  // seconds; the menu is closed by then

    StampEditing(TimelineDataManager& timeline, const TagLibraryManager& tagLibrary,
                 UserDefaults& defaults, Scheduler& scheduler)
        : timeline_(timeline),
          tagLibrary_(tagLibrary),
          defaults_(defaults),
          scheduler_(scheduler) {}

    // The open edit sheet, if any.
    Published<std::optional<StampEditSheetType>, StampEditing> sheetType;

    void request(const Uuid& line, const Uuid& stamp, StampEditSheetType type);

    // What was requested last. The sheet keeps it: the ids in the defaults may change meanwhile.
    // Absent if the stamp cannot be found.
    std::optional<StampEdit> requested(StampEditSheetType type) const;
    // The arguments of the selection sheet; absent if the stamp cannot be found.
    std::optional<StampItemsSelection::Arguments> arguments(const StampEdit& edit) const;
    // The sheet of the edit has ended.
    void finish(const StampEdit& edit, std::vector<std::string> ids);
    void cancel() { sheetType.set({}); }

  private:
    const TimelineStamp* find(const Uuid& line, const Uuid& stamp) const;

    TimelineDataManager& timeline_;
    const TagLibraryManager& tagLibrary_;
    UserDefaults& defaults_;
    Scheduler& scheduler_;
    std::unique_ptr<Timer> timer_;
};

}  // namespace tembrix
