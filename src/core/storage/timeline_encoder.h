#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/cow.h"
#include "base/result.h"

#include "ports/user_defaults.h"

#include "core/records/timeline_records.h"

namespace tembrix {

// Encodes the timelines of a video to the same bytes as the plain codec, in pieces: one or more per
// line, of some dozen stamps each. Only the pieces that changed since the last call are encoded;
// the others are the objects of last time. Where a piece ends is decided by the ids of its stamps,
// so that an inserted stamp changes no piece but its own, and an opened video is cut as it was when
// it was stored.
class TimelineEncoder {
  public:
    // Fails if a number is not finite; the pieces of the last success are kept then. Errors: domain
    // "json".
    Result<void> encode(const TimelineLines& lines);

    // The document after the last successful call.
    const ValuePieces& pieces() const { return pieces_; }

    // The former versions of the lines that have changed since. To release one of many stamps
    // takes a while.
    std::vector<Cow<TimelineLine>> takeReleased() { return std::exchange(released_, {}); }

  private:
    struct Line {
        Cow<TimelineLine> line;           // kept, so that its owner cannot change it in place
        bool first = false;               // in the document
        std::vector<std::uint32_t> runs;  // stamps in each of its pieces
    };
    struct Change;
    class Writer;
    friend void write(Writer& writer, const Stamps& stamps);

    bool isAligned(const TimelineLines& lines) const;
    Result<void> update(const TimelineLines& lines);
    Result<void> rebuild(const TimelineLines& lines);
    static Result<Change> changeOf(const Line* before, const Cow<TimelineLine>& line, bool first);
    static Result<void> encodeRuns(const TimelineLine& line, bool first, bool last, Change& change);

    std::vector<Line> lines_;
    std::vector<Cow<TimelineLine>> released_;
    ValuePieces pieces_;  // of all lines, and one for the closing bracket
};

}  // namespace tembrix
