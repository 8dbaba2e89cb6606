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

// The road from "edit labels" in a stamp's menu to the changed stamp. The stamp in hand is kept in
// the user defaults, where the edit sheet reads it.
class StampEditing {
  public:
    static constexpr double sheetDelay = 0.1;  // seconds, so that the menu is gone before

    StampEditing(TimelineDataManager& timeline, const TagLibraryManager& tagLibrary,
                 UserDefaults& defaults, Scheduler& scheduler)
        : timeline_(timeline),
          tagLibrary_(tagLibrary),
          defaults_(defaults),
          scheduler_(scheduler) {}

    // Present while the edit sheet is open.
    Published<std::optional<StampEditSheetType>> sheetType;

    void request(const Uuid& line, const Uuid& stamp, StampEditSheetType type);

    // What the selection sheet starts from; absent if the stamp cannot be found.
    std::optional<StampItemsSelection::Arguments> arguments(StampEditSheetType type) const;
    void finish(std::vector<std::string> ids);
    void cancel() { sheetType.set({}); }

  private:
    struct Target {
        Uuid line;
        const TimelineStamp* stamp;
    };
    std::optional<Target> target() const;

    TimelineDataManager& timeline_;
    const TagLibraryManager& tagLibrary_;
    UserDefaults& defaults_;
    Scheduler& scheduler_;
    std::unique_ptr<Timer> timer_;
};

}  // namespace tembrix
