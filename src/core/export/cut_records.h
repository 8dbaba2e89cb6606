#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/geometry.h"
#include "base/uuid.h"

#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// What is exported.
namespace cuts {
struct TagCuts {
    Tag selectedTag;
};
struct TimeEventCuts {
    TimeEvent selectedEvent;
};
struct LabelCuts {
    Label selectedLabel;
};
struct TagWithLabels {
    Tag selectedTag;
    std::vector<Label> selectedLabels;
};
struct LabelWithTags {
    Label selectedLabel;
    std::vector<Tag> selectedTags;
};
struct CurrentTimeline {};
struct AllTimelines {};
struct Screenshots {};
struct DrawingsTimeline {};
}  // namespace cuts

// The order of the alternatives is fixed, because other code uses their indices.
using CutsExportType = std::variant<cuts::TagCuts, cuts::TimeEventCuts, cuts::LabelCuts,
                                    cuts::TagWithLabels, cuts::LabelWithTags, cuts::CurrentTimeline,
                                    cuts::AllTimelines, cuts::Screenshots, cuts::DrawingsTimeline>;

// One film with all cuts in sequence, or an archive with one file per cut.
enum class ExportMode { film, playlist };

// A media time: a whole number of 1/600 seconds.
struct MediaTime {
    long long ticks = 0;
    // Truncated toward zero, after rounding away errors below 1e-9.
    static MediaTime fromSeconds(double seconds);
    double seconds() const { return static_cast<double>(ticks) / 600.0; }
    MediaTime operator+(MediaTime other) const { return {ticks + other.ticks}; }
    MediaTime operator-(MediaTime other) const { return {ticks - other.ticks}; }
    auto operator<=>(const MediaTime&) const = default;
};

struct MediaTimeRange {
    MediaTime start;
    MediaTime duration;
    MediaTime end() const { return start + duration; }
    bool operator==(const MediaTimeRange&) const = default;
};

// One cut of an export.
struct ExportSegment {
    TimelineStamp stamp;
    std::string tagName;
    MediaTimeRange timeRange;
    std::optional<std::string> lineName;
    std::optional<std::string> groupName;
    std::optional<std::string> labelGroupName;
    std::optional<Label> selectedLabel;
    std::optional<Uuid> stampId;
};

// The labels of a stamp that belong to one group.
struct OverlayLabelGroupItem {
    LabelGroupData group;
    std::vector<Label> selectedLabels;
    bool operator==(const OverlayLabelGroupItem& other) const {
        return group.id == other.group.id && selectedLabels == other.selectedLabels;
    }
};

// The content of the overlay of one cut.
struct OverlayItem {
    Tag tag;
    TimelineStamp stamp;
    std::vector<OverlayLabelGroupItem> selectedLabelGroups;
    MediaTime start;
    MediaTime duration;
    std::optional<Size> videoSize;
};

}  // namespace tembrix
