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

// The numbers of stamps in overlays: the 1-based position among all stamps of the same tag, sorted
// by start. Computed once for all stamps.
class StampNumbers {
  public:
    explicit StampNumbers(const TimelineLines& lines);
    std::optional<int> numberOf(const Uuid& stamp) const;  // absent if it is not on any timeline

  private:
    std::unordered_map<Uuid, int> numbers_;
};

// The text in the bar of a cut: tag and number in green, time events in orange, labels in white.
// Absent if the stamp is not on any timeline. `library` is the merged lists; `timeEvents` are those
// of the active collection.
std::optional<RichText> overlayText(const OverlayItem& item, const StampNumbers& numbers,
                                    const CollectionLists& library,
                                    const std::vector<TimeEvent>& timeEvents);

// A dark bar along the lower edge of the picture. It is as high as its text, at most a quarter of
// the picture.
struct OverlayBar {
    DisplayList picture;
    int top = 0;  // pixels from the upper edge of the picture
};
OverlayBar overlayBar(const RichText& text, Size renderSize, const TextMeasure& measure);

}  // namespace tembrix
