#include "core/storage/timeline_encoder.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/bytes.h"
#include "base/json.h"
#include "base/uuid.h"

#include "core/records/common_stamps.h"
#include "core/records/record_fields.h"

namespace tembrix {

namespace {

// The average number of stamps per piece. With small pieces a press writes little data; with large
// pieces a value has a short list of pieces.
constexpr std::size_t stampsPerPiece = 16;

bool endsPiece(const Cow<TimelineStamp>& stamp) {
    return std::hash<Uuid>{}(stamp->id) % stampsPerPiece == 0;
}

std::ptrdiff_t offset(std::size_t index) {
    return static_cast<std::ptrdiff_t>(index);
}

[[maybe_unused]] bool isTrue(const EditedLine& edit) {
    const Stamps& old = edit.before->stamps;
    const Stamps& now = edit.after->stamps;
    const auto same = [](const auto& a, const auto& b) { return a.sharesWith(b); };
    return edit.front + edit.back <= std::min(old.size(), now.size()) &&
           std::equal(old.begin(), old.begin() + offset(edit.front), now.begin(), same) &&
           std::equal(old.end() - offset(edit.back), old.end(), now.end() - offset(edit.back),
                      same);
}

CommonStamps commonStamps(const Cow<TimelineLine>& old, const Cow<TimelineLine>& now,
                          const EditedLines& edits) {
    for (const auto& edit : edits)
        if (edit.before.sharesWith(old) && edit.after.sharesWith(now)) {
            assert(isTrue(edit));
            return {edit.front, edit.back};
        }
    return commonStamps(old->stamps, now->stamps);
}

}  // namespace

// How the pieces of a line differ from the last ones: some at the front and at the back are kept,
// the others are replaced.
struct TimelineEncoder::Change {
    std::size_t front = 0;
    std::size_t back = 0;
    std::size_t firstStamp = 0;  // index of the first stamp in the new pieces
    std::size_t lastStamp = 0;   // index after the last one
    ValuePieces pieces;
    std::vector<std::uint32_t> runs;
};

// Encodes a line without its stamps and remembers the place for them.
class TimelineEncoder::Writer : public json::CompactWriter {
  public:
    explicit Writer(rapidjson::StringBuffer& buffer)
        : json::CompactWriter(buffer), buffer_(buffer) {}

    void skipStamps() {
        StartArray();
        stampsAt_ = buffer_.GetSize();
        EndArray();
    }
    std::string_view beforeStamps() const { return {buffer_.GetString(), stampsAt_}; }
    std::string_view afterStamps() const {
        return {buffer_.GetString() + stampsAt_, buffer_.GetSize() - stampsAt_};
    }

  private:
    rapidjson::StringBuffer& buffer_;
    std::size_t stampsAt_ = 0;
};

void write(TimelineEncoder::Writer& writer, const Stamps&) {
    writer.skipStamps();
}

Result<void> TimelineEncoder::encode(const TimelineLines& lines, const EditedLines& edits) {
    return isAligned(lines) ? update(lines, edits) : rebuild(lines, edits);
}

bool TimelineEncoder::isAligned(const TimelineLines& lines) const {
    return !lines.empty() && std::equal(lines.begin(), lines.end(), lines_.begin(), lines_.end(),
                                        [](const Cow<TimelineLine>& line, const Line& before) {
                                            return line.sharesWith(before.line) ||
                                                   line->id == before.line->id;
                                        });
}

// Updates the lists in place if no line was added, removed or moved.
Result<void> TimelineEncoder::update(const TimelineLines& lines, const EditedLines& edited) {
    struct Edit {
        std::size_t line;
        std::size_t firstPiece;
        Change change;
    };
    std::vector<Edit> edits;
    std::size_t piece = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!lines[i].sharesWith(lines_[i].line)) {
            auto change = changeOf(&lines_[i], lines[i], i == 0, edited);
            if (!change)
                return change.error();
            edits.push_back({i, piece, std::move(change).value()});
        }
        piece += lines_[i].runs.size();
    }
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        Line& line = lines_[edit->line];
        Change& change = edit->change;
        const auto from = offset(edit->firstPiece + change.front);
        const auto to = offset(edit->firstPiece + line.runs.size() - change.back);
        const auto at = pieces_.erase(pieces_.begin() + from, pieces_.begin() + to);
        pieces_.insert(at, change.pieces.begin(), change.pieces.end());
        const auto run = line.runs.erase(line.runs.begin() + offset(change.front),
                                         line.runs.end() - offset(change.back));
        line.runs.insert(run, change.runs.begin(), change.runs.end());
        released_.push_back(std::exchange(line.line, lines[edit->line]));
    }
    return {};
}

Result<void> TimelineEncoder::rebuild(const TimelineLines& lines, const EditedLines& edits) {
    struct Known {
        const Line* line;
        std::size_t firstPiece;
    };
    std::unordered_map<Uuid, Known> known;
    std::size_t piece = 0;
    for (const auto& line : lines_) {
        known.emplace(line.line->id, Known{&line, piece});
        piece += line.runs.size();
    }
    std::vector<Line> newLines;
    ValuePieces newPieces;
    for (const auto& line : lines) {
        const auto found = known.find(line->id);
        const Line* before = found == known.end() ? nullptr : found->second.line;
        auto change = changeOf(before, line, newLines.empty(), edits);
        if (!change)
            return change.error();
        Line after{line, newLines.empty(), {}};
        if (before) {
            const auto old = pieces_.begin() + offset(found->second.firstPiece);
            newPieces.insert(newPieces.end(), old, old + offset(change->front));
            newPieces.insert(newPieces.end(), change->pieces.begin(), change->pieces.end());
            const auto oldEnd = old + offset(before->runs.size());
            newPieces.insert(newPieces.end(), oldEnd - offset(change->back), oldEnd);
            after.runs.assign(before->runs.begin(), before->runs.begin() + offset(change->front));
            after.runs.insert(after.runs.end(), change->runs.begin(), change->runs.end());
            after.runs.insert(after.runs.end(), before->runs.end() - offset(change->back),
                              before->runs.end());
        } else {
            newPieces.insert(newPieces.end(), change->pieces.begin(), change->pieces.end());
            after.runs = std::move(change->runs);
        }
        newLines.push_back(std::move(after));
    }
    newPieces.push_back(std::make_shared<const ValuePiece>(toBytes(newLines.empty() ? "[]" : "]")));
    lines_ = std::move(newLines);
    pieces_ = std::move(newPieces);
    return {};
}

Result<TimelineEncoder::Change> TimelineEncoder::changeOf(const Line* before,
                                                          const Cow<TimelineLine>& line, bool first,
                                                          const EditedLines& edits) {
    Change change;
    const Stamps& now = line->stamps;
    change.lastStamp = now.size();
    const bool sameFrame = before && before->first == first && before->line->id == line->id &&
                           before->line->name == line->name &&
                           before->line->tagIdForMode == line->tagIdForMode;
    if (sameFrame) {
        const auto& runs = before->runs;
        if (before->line.sharesWith(line)) {
            change.front = runs.size();
            return change;
        }
        const auto [prefix, suffix] = commonStamps(before->line, line, edits);
        // The last piece contains the end of the line, so it is never kept at the front.
        std::size_t inFront = 0;
        while (change.front + 1 < runs.size() && inFront + runs[change.front] <= prefix)
            inFront += runs[change.front++];
        // A piece at the back is kept if the stamp before it still ends a piece.
        std::size_t inBack = 0;
        while (change.front + change.back + 1 < runs.size()) {
            const std::size_t with = inBack + runs[runs.size() - 1 - change.back];
            if (with > suffix || with >= now.size() ||
                (with == suffix && !endsPiece(now[now.size() - 1 - with])))
                break;
            inBack = with;
            ++change.back;
        }
        if (change.back == 0 && inFront == now.size() && change.front > 0)
            inFront -= runs[--change.front];
        change.firstStamp = inFront;
        change.lastStamp = now.size() - inBack;
    }
    if (const auto encoded = encodeRuns(*line, first, change.back == 0, change); !encoded)
        return encoded.error();
    return change;
}

// Encodes the changed stamps, and the beginning and the end of the line unless they are in pieces
// that are kept.
Result<void> TimelineEncoder::encodeRuns(const TimelineLine& line, bool first, bool last,
                                         Change& change) {
    rapidjson::StringBuffer frame;
    Writer frameWriter(frame);
    json::write(frameWriter, line);
    rapidjson::StringBuffer buffer;
    json::CompactWriter writer(buffer);
    std::string text;
    if (change.front == 0) {
        text += first ? '[' : ',';
        text += frameWriter.beforeStamps();
    }
    std::uint32_t run = 0;
    const auto endPiece = [&] {
        change.pieces.push_back(std::make_shared<const ValuePiece>(toBytes(text)));
        change.runs.push_back(std::exchange(run, 0));
        text.clear();
    };
    for (std::size_t i = change.firstStamp; i < change.lastStamp; ++i) {
        if (i > 0)
            text += ',';
        buffer.Clear();
        writer.Reset(buffer);
        json::write(writer, *line.stamps[i]);
        text.append(buffer.GetString(), buffer.GetSize());
        ++run;
        if (endsPiece(line.stamps[i]) && i + 1 < change.lastStamp)
            endPiece();
    }
    if (last)
        text += frameWriter.afterStamps();
    if (!text.empty())
        endPiece();
    return writer.finite() ? Result<void>() : json::notFinite();
}

}  // namespace tembrix
