#include "core/records/timeline_records.h"

namespace tembrix {

Uuid drawingsLineId() {
    static const Uuid id = *Uuid::parse("00000000-0000-0000-0000-000000000228");
    return id;
}

std::string_view stampEditSheetText(StampEditSheetType type) {
    return type == StampEditSheetType::lables ? "lables" : "timeEvents";
}

}  // namespace tembrix
