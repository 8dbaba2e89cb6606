#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "base/geometry.h"
#include "base/uuid.h"

#include "ports/images.h"

#include "core/export/cut_records.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// The numbers of stamps in overlays: the 1-based place among the stamps of the same tag on all
// timelines, by start. Counted once for all stamps.
class StampNumbers {
  public:
    explicit StampNumbers(const TimelineLines& lines);
    std::optional<int> numberOf(const Uuid& stamp) const;  // absent for a stamp on no timeline

  private:
    std::unordered_map<Uuid, int> numbers_;
};

// The text in the bar of a cut: tag and number in green, time events in orange, labels in white.
// Absent if the stamp is on no timeline. `library` holds the merged lists, `timeEvents` those of
// the active collection.
std::optional<RichText> overlayText(const OverlayItem& item, const StampNumbers& numbers,
                                    const CollectionLists& library,
                                    const std::vector<TimeEvent>& timeEvents);

// A dark bar along the lower edge of the picture, as high as its text needs, up to a quarter of
// the picture.
struct OverlayBar {
    DisplayList picture;
    int top = 0;  // pixels from the upper edge of the picture
};
OverlayBar overlayBar(const RichText& text, Size renderSize, const TextMeasure& measure);

}  // namespace tembrix
