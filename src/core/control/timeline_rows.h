#pragma once

#include <optional>
#include <vector>

#include "base/cow.h"
#include "base/geometry.h"
#include "base/uuid.h"

#include "core/control/stamp_layout.h"
#include "core/control/timeline_axis.h"
#include "core/records/timeline_records.h"

namespace tembrix {

enum class ResizeEdge { left, right };

// Seconds of the video.
struct TimeSpan {
    double start = 0;
    double finish = 0;
};

// A line with the data that the control window computes for it.
struct TimelineRow {
    Cow<TimelineLine> line;
    std::vector<int> levels;  // the overlap level of each stamp
    // If the last update changed only stamps: the time that they took up before or take up now.
    std::optional<TimeSpan> changed;

    std::optional<std::size_t> stampIndex(const Uuid& stamp) const;
};

// What is at a point of the rows.
struct TimelineHit {
    std::size_t row = 0;
    std::optional<std::size_t> stamp;  // index in the row's line; absent on the background
    std::optional<ResizeEdge> grip;    // of that stamp
    bool operator==(const TimelineHit&) const = default;
};

// The two grips of a stamp. They are inside its ends or, if the stamp is too short, beside them.
struct GripRects {
    Rect left;
    Rect right;
};
GripRects gripRects(const Rect& stamp, const TimelineAxis& axis);

// The rows of the control window, with cached layout. Coordinates are in points: x along the axis,
// y from the top of the first row.
class TimelineRows {
  public:
    // Replaces the lines. Returns the indices of the rows that changed; all of them if the number
    // of lines has changed.
    std::vector<std::size_t> update(const TimelineLines& lines);

    std::size_t size() const { return rows_.size(); }
    const TimelineRow& operator[](std::size_t index) const { return rows_[index]; }
    double height() const { return static_cast<double>(size()) * TimelineMetrics::rowHeight; }

    std::optional<std::size_t> indexOfLine(const Uuid& line) const;
    std::optional<TimelineHit> findStamp(const Uuid& stamp) const;

    // The topmost stamp at the point. The grips of the selected stamp have priority.
    std::optional<TimelineHit> hit(Point point, const TimelineAxis& axis,
                                   const std::optional<Uuid>& selectedStamp) const;

  private:
    std::vector<TimelineRow> rows_;
};

// The first stamp of the line that contains the time, or null.
const TimelineStamp* stampAt(const TimelineLine& line, double time);

}  // namespace tembrix
