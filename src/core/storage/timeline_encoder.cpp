#include "core/storage/timeline_encoder.h"

#include <cstring>
#include <utility>

#include "base/json.h"

#include "core/records/record_fields.h"

namespace tembrix {

namespace {

// A part of a document's text.
struct Slice {
    std::size_t begin = 0;
    std::size_t size = 0;
};

struct EncodedLine {
    Cow<TimelineLine> line;  // held, so that its owner cannot change it in place
    Slice text;
    std::vector<Slice> stamps;  // in the order of the line's stamps
};

}  // namespace

struct TimelineEncoder::Document {
    rapidjson::StringBuffer text;
    std::vector<EncodedLine> lines;
};

// Writes the next document. The field tables drive it as they drive any other writer; only whole
// lines and stamps take the short way, through the two overloads below.
class TimelineEncoder::Writer : public json::CompactWriter {
  public:
    Writer(const Document& last, Document& next)
        : json::CompactWriter(next.text), last_(last), next_(next) {}

    void line(const Cow<TimelineLine>& line) {
        const EncodedLine* before = find(line);
        EncodedLine after{line, {}, {}};
        if (before && before->line.sharesWith(line)) {
            after.text = copy(before->text);
            after.stamps = before->stamps;
            const auto shift = after.text.begin - before->text.begin;  // wraps where it is negative
            for (auto& stamp : after.stamps)
                stamp.begin += shift;
        } else {
            before_ = before;
            cursor_ = 0;
            stamps_.clear();
            after.text = fresh(*line);
            after.stamps = std::exchange(stamps_, {});
        }
        next_.lines.push_back(std::move(after));
    }

    void stamp(const Cow<TimelineStamp>& stamp) {
        if (const Slice* text = findStamp(stamp))
            stamps_.push_back(copy(*text));
        else
            stamps_.push_back(fresh(*stamp));
    }

  private:
    // The line of last time with this id; lines seldom change places.
    const EncodedLine* find(const Cow<TimelineLine>& line) const {
        const auto at = next_.lines.size();
        if (at < last_.lines.size() && last_.lines[at].line->id == line->id)
            return &last_.lines[at];
        for (const auto& candidate : last_.lines) {
            if (candidate.line->id == line->id)
                return &candidate;
        }
        return nullptr;
    }

    // The text of this very stamp in the line of last time. Stamps are compared in step; a stamp
    // that was changed or removed there is passed over.
    const Slice* findStamp(const Cow<TimelineStamp>& stamp) {
        if (!before_)
            return nullptr;
        const Stamps& stamps = before_->line->stamps;
        for (std::size_t ahead = 0; ahead < 2 && cursor_ + ahead < stamps.size(); ++ahead) {
            if (stamps[cursor_ + ahead].sharesWith(stamp)) {
                cursor_ += ahead + 1;
                return &before_->stamps[cursor_ - 1];
            }
        }
        return nullptr;
    }

    Slice copy(const Slice& slice) {
        Prefix(rapidjson::kObjectType);
        const std::size_t begin = next_.text.GetSize();
        if (slice.size > 0)
            std::memcpy(next_.text.Push(slice.size), last_.text.GetString() + slice.begin,
                        slice.size);
        EndValue(true);
        return {begin, slice.size};
    }

    template <class Record>
    Slice fresh(const Record& record) {
        std::size_t begin = next_.text.GetSize();
        json::write(*this, record);
        if (next_.text.GetString()[begin] == ',')
            ++begin;
        return {begin, next_.text.GetSize() - begin};
    }

    const Document& last_;
    Document& next_;
    const EncodedLine* before_ = nullptr;  // the line in hand as it was last time
    std::size_t cursor_ = 0;               // the next of its stamps to compare with
    std::vector<Slice> stamps_;            // of the line in hand
};

void write(TimelineEncoder::Writer& w, const Cow<TimelineLine>& line) {
    w.line(line);
}

void write(TimelineEncoder::Writer& w, const Cow<TimelineStamp>& stamp) {
    w.stamp(stamp);
}

TimelineEncoder::TimelineEncoder()
    : last_(std::make_unique<Document>()), next_(std::make_unique<Document>()) {}

TimelineEncoder::~TimelineEncoder() = default;

Result<BytesView> TimelineEncoder::encode(const TimelineLines& lines) {
    next_->text.Clear();
    next_->lines.clear();
    Writer writer(*last_, *next_);
    json::write(writer, lines);
    if (!writer.finite())
        return json::notFinite();
    std::swap(last_, next_);
    next_->lines.clear();  // lets go of lines that are gone
    return BytesView(reinterpret_cast<const std::uint8_t*>(last_->text.GetString()),
                     last_->text.GetSize());
}

}  // namespace tembrix
