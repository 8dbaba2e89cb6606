#include "core/timeline/timeline_changes.h"

#include <algorithm>
#include <utility>

namespace tembrix {

namespace {

const AppliedChange impossible{false, std::nullopt};
const AppliedChange unchanged{true, std::nullopt};

std::ptrdiff_t place(std::size_t index, std::size_t size) {
    return static_cast<std::ptrdiff_t>(std::min(index, size));
}

// A writable line and the index of a stamp in it, if both exist.
struct StampPlace {
    Cow<TimelineLine>* line;
    std::size_t index;
    const TimelineStamp& read() const { return *(*line)->stamps[index]; }
    TimelineStamp& write() const { return line->write().stamps[index].write(); }
    // If only this stamp is changed or removed.
    UntouchedStamps untouched() const {
        return {(*line)->id, index, (*line)->stamps.size() - index - 1};
    }
};
std::optional<StampPlace> findPlace(TimelineLines& lines, const Uuid& line, const Uuid& stamp) {
    const auto row = lineIndex(lines, line);
    if (!row)
        return std::nullopt;
    const auto index = stampIndex(*lines[*row], stamp);
    if (!index)
        return std::nullopt;
    return StampPlace{&lines[*row], *index};
}

AppliedChange apply(TimelineLines& lines, const InsertLine& change) {
    if (lineIndex(lines, change.line->id))
        return impossible;
    lines.insert(lines.begin() + place(change.index, lines.size()), change.line);
    return {true, RemoveLine{change.line->id}};
}

AppliedChange apply(TimelineLines& lines, const RemoveLine& change) {
    const auto index = lineIndex(lines, change.line);
    if (!index)
        return impossible;
    const auto at = lines.begin() + static_cast<std::ptrdiff_t>(*index);
    InsertLine inverse{*index, std::move(*at)};
    lines.erase(at);
    return {true, std::move(inverse)};
}

AppliedChange apply(TimelineLines& lines, const MoveLine& change) {
    const auto from = lineIndex(lines, change.line);
    if (!from)
        return impossible;
    const std::size_t to = std::min(change.index, lines.size() - 1);
    if (*from == to)
        return unchanged;
    const auto first = lines.begin() + static_cast<std::ptrdiff_t>(std::min(*from, to));
    const auto last = lines.begin() + static_cast<std::ptrdiff_t>(std::max(*from, to)) + 1;
    std::rotate(first, *from < to ? first + 1 : last - 1, last);
    return {true, MoveLine{change.line, *from}};
}

AppliedChange apply(TimelineLines& lines, const RenameLine& change) {
    const auto index = lineIndex(lines, change.line);
    if (!index)
        return impossible;
    if (lines[*index]->name == change.name)
        return unchanged;
    TimelineLine& line = lines[*index].write();
    return {true, RenameLine{line.id, std::exchange(line.name, change.name), line.tagIdForMode}};
}

AppliedChange apply(TimelineLines& lines, const InsertStamp& change) {
    const auto row = lineIndex(lines, change.line);
    if (!row || stampIndex(*lines[*row], change.stamp->id))
        return impossible;
    Stamps& stamps = lines[*row].write().stamps;
    const std::size_t index = std::min(change.index, stamps.size());
    const UntouchedStamps untouched{change.line, index, stamps.size() - index};
    stamps.insert(stamps.begin() + place(index, stamps.size()), change.stamp);
    return {true, RemoveStamp{change.line, change.stamp->id}, untouched};
}

AppliedChange apply(TimelineLines& lines, const RemoveStamp& change) {
    const auto found = findPlace(lines, change.line, change.stamp);
    if (!found)
        return impossible;
    const UntouchedStamps untouched = found->untouched();
    Stamps& stamps = found->line->write().stamps;
    const auto at = stamps.begin() + static_cast<std::ptrdiff_t>(found->index);
    InsertStamp inverse{change.line, found->index, std::move(*at)};
    stamps.erase(at);
    return {true, std::move(inverse), untouched};
}

AppliedChange apply(TimelineLines& lines, const SetStampTimes& change) {
    const auto found = findPlace(lines, change.line, change.stamp);
    if (!found)
        return impossible;
    if (found->read().timeStartSeconds == change.start &&
        found->read().timeFinishSeconds == change.finish)
        return unchanged;
    TimelineStamp& stamp = found->write();
    return {true,
            SetStampTimes{change.line, change.stamp,
                          std::exchange(stamp.timeStartSeconds, change.start),
                          std::exchange(stamp.timeFinishSeconds, change.finish)},
            found->untouched()};
}

AppliedChange apply(TimelineLines& lines, const SetStampLabels& change) {
    const auto found = findPlace(lines, change.line, change.stamp);
    if (!found)
        return impossible;
    if (found->read().labels == change.labels)
        return unchanged;
    return {true,
            SetStampLabels{change.line, change.stamp,
                           std::exchange(found->write().labels, change.labels)},
            found->untouched()};
}

AppliedChange apply(TimelineLines& lines, const SetStampTimeEvents& change) {
    const auto found = findPlace(lines, change.line, change.stamp);
    if (!found)
        return impossible;
    if (found->read().timeEvents == change.events)
        return unchanged;
    return {true,
            SetStampTimeEvents{change.line, change.stamp,
                               std::exchange(found->write().timeEvents, change.events)},
            found->untouched()};
}

bool renameStamp(Cow<TimelineStamp>& stamp, const std::string& tagId, const std::string& name) {
    if (stamp->idTag != tagId || stamp->label == name)
        return false;
    stamp.write().label = name;
    return true;
}

}  // namespace

AppliedChange applyChange(TimelineLines& lines, const TimelineChange& change) {
    return std::visit([&](const auto& kind) { return apply(lines, kind); }, change);
}

bool renameTagIn(Cow<TimelineLine>& line, const std::string& tagId, const std::string& name) {
    bool changed = false;
    for (std::size_t i = 0; i < line->stamps.size(); ++i) {
        const TimelineStamp& stamp = *line->stamps[i];
        // Checked before writing, so that lines without the tag remain shared.
        if (stamp.idTag == tagId && stamp.label != name)
            changed |= renameStamp(line.write().stamps[i], tagId, name);
    }
    if (line->tagIdForMode == tagId && line->name != name) {
        line.write().name = name;
        changed = true;
    }
    return changed;
}

void renameTagIn(TimelineChange& change, const std::string& tagId, const std::string& name) {
    if (auto* insert = std::get_if<InsertStamp>(&change))
        renameStamp(insert->stamp, tagId, name);
    else if (auto* line = std::get_if<InsertLine>(&change))
        renameTagIn(line->line, tagId, name);
    else if (auto* rename = std::get_if<RenameLine>(&change);
             rename && rename->tagIdForMode == tagId)
        rename->name = name;
}

bool isDrawingStamp(const TimelineStamp& stamp) {
    return stamp.idTag.starts_with("screenshot_");
}

std::optional<std::size_t> lineIndex(const TimelineLines& lines, const Uuid& line) {
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (lines[i]->id == line)
            return i;
    return std::nullopt;
}

std::optional<std::size_t> stampIndex(const TimelineLine& line, const Uuid& stamp) {
    // Searched from the end, because usually one of the newest stamps is changed or undone.
    for (std::size_t i = line.stamps.size(); i-- > 0;)
        if (line.stamps[i]->id == stamp)
            return i;
    return std::nullopt;
}

}  // namespace tembrix
