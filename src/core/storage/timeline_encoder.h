#pragma once

#include <memory>
#include <vector>

#include "base/bytes.h"
#include "base/cow.h"
#include "base/result.h"

#include "core/records/timeline_records.h"

namespace tembrix {

// Encodes the timelines of a video to the same bytes as the plain codec, but encodes afresh only
// what changed since the last call: a shared line or stamp is the one of last time, and its text is
// copied over. With ten thousand stamps a press costs a copy of memory instead of an encoding.
class TimelineEncoder {
  public:
    TimelineEncoder();
    ~TimelineEncoder();

    // The document, valid until the next call. Fails if a number is not finite; the texts of the
    // last success are kept then. Errors: domain "json".
    Result<BytesView> encode(const TimelineLines& lines);

  private:
    struct Document;
    class Writer;
    friend void write(Writer& w, const Cow<TimelineLine>& line);
    friend void write(Writer& w, const Cow<TimelineStamp>& stamp);

    std::unique_ptr<Document> last_;
    std::unique_ptr<Document> next_;
};

}  // namespace tembrix
