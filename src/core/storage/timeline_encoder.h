#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/cow.h"
#include "base/result.h"

#include "ports/user_defaults.h"

#include "core/records/timeline_records.h"
#include "core/storage/edited_line.h"

namespace tembrix {

// Encodes the timelines of a video to the same bytes as the plain codec, in pieces: one or more per
// line, with about a dozen stamps each. Only pieces that have changed since the last call are
// encoded; the others are reused. The ids of the stamps determine where pieces end, so that an
// inserted stamp only changes its own piece, and an opened video is split in the same way as when
// it was stored.
class TimelineEncoder {
  public:
    // Of an edited line whose version before is the one encoded last, only the stamps in between
    // are compared; of other lines that changed, all are. Fails if a number is not finite; then the
    // pieces of the last successful call are kept. Errors: domain "json".
    Result<void> encode(const TimelineLines& lines, const EditedLines& edits = {});

    // The document after the last successful call.
    const ValuePieces& pieces() const { return pieces_; }

    // The old versions of lines that have changed. Releasing a line with many stamps takes time.
    std::vector<Cow<TimelineLine>> takeReleased() { return std::exchange(released_, {}); }

  private:
    struct Line {
        Cow<TimelineLine> line;           // kept, so that its owner cannot modify it in place
        bool first = false;               // the first line of the document
        std::vector<std::uint32_t> runs;  // number of stamps in each piece
    };
    struct Change;
    class Writer;
    friend void write(Writer& writer, const Stamps& stamps);

    bool isAligned(const TimelineLines& lines) const;
    Result<void> update(const TimelineLines& lines, const EditedLines& edits);
    Result<void> rebuild(const TimelineLines& lines, const EditedLines& edits);
    static Result<Change> changeOf(const Line* before, const Cow<TimelineLine>& line, bool first,
                                   const EditedLines& edits);
    static Result<void> encodeRuns(const TimelineLine& line, bool first, bool last, Change& change);

    std::vector<Line> lines_;
    std::vector<Cow<TimelineLine>> released_;
    ValuePieces pieces_;  // of all lines, and one for the closing bracket
};

}  // namespace tembrix
