#include "core/export/cut_planning.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "base/utf8_text.h"

namespace tembrix {

namespace {

constexpr double wholeVideoShare = 0.99;  // a longer stamp counts as the whole video
constexpr double nearStart = 0.1;         // seconds
constexpr double shortestTagCut = 0.1;    // seconds

bool contains(const std::vector<std::string>& ids, const std::string& id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

template <class Record>
const Record* findById(const std::vector<Record>& records, const std::string& id) {
    const auto found = std::find_if(records.begin(), records.end(),
                                    [&](const Record& record) { return record.id == id; });
    return found == records.end() ? nullptr : &*found;
}

std::optional<std::string> groupOfTag(const std::string& tagId, const CollectionLists& library) {
    for (const auto& group : library.tagGroups)
        if (contains(group.tags, tagId))
            return group.name;
    return std::nullopt;
}

const LabelGroupData* groupOfLabel(const std::string& labelId, const CollectionLists& library) {
    for (const auto& group : library.labelGroups)
        if (contains(group.lables, labelId))
            return &group;
    return nullptr;
}

// Converts stamps to cuts. The kinds of export select different stamps and add different names.
class Planner {
  public:
    Planner(const CutPlanInput& input, Log& log)
        : input_(input), log_(log), videoDuration_(std::max(input.videoDuration, 1.0)) {}

    std::vector<ExportSegment> plan(const CutsExportType& type) {
        std::visit([this](const auto& cuts) { add(cuts); }, type);
        std::stable_sort(cuts_.begin(), cuts_.end(),
                         [](const ExportSegment& a, const ExportSegment& b) {
                             return a.timeRange.start < b.timeRange.start;
                         });
        return std::move(cuts_);
    }

  private:
    void add(const cuts::TagCuts& type) {
        const auto group = groupOfTag(type.selectedTag.id, input_.library);
        forEachStamp([&](const TimelineLine& line, const TimelineStamp& stamp) {
            if (stamp.idTag != type.selectedTag.id)
                return;
            const auto range = clamped(stamp);
            if (range && !isFiltered(type.selectedTag.name, *range))
                append(line, stamp, *range).groupName = group;
        });
    }
    void add(const cuts::TimeEventCuts& type) {
        addMatching([&](const TimelineStamp& stamp) {
            return contains(stamp.timeEvents, type.selectedEvent.id);
        });
    }
    void add(const cuts::LabelCuts& type) {
        addMatching([&](const TimelineStamp& stamp) {
            return contains(stamp.labels, type.selectedLabel.id);
        });
        nameLabel(type.selectedLabel);
    }
    void add(const cuts::TagWithLabels& type) {
        addMatching([&](const TimelineStamp& stamp) {
            return stamp.idTag == type.selectedTag.id &&
                   std::any_of(
                       type.selectedLabels.begin(), type.selectedLabels.end(),
                       [&](const Label& label) { return contains(stamp.labels, label.id); });
        });
    }
    void add(const cuts::LabelWithTags& type) {
        addMatching([&](const TimelineStamp& stamp) {
            return contains(stamp.labels, type.selectedLabel.id) &&
                   findById(type.selectedTags, stamp.idTag);
        });
        nameLabel(type.selectedLabel);
    }
    void add(const cuts::CurrentTimeline&) {
        if (input_.selectedLineID)
            addLine(*input_.selectedLineID);
    }
    void add(const cuts::AllTimelines&) {
        addMatching([](const TimelineStamp&) { return true; });
        for (auto& cut : cuts_) {
            std::vector<std::string> names;
            for (const auto& id : cut.stamp.labels)
                if (const auto* label = findById(input_.library.labels, id))
                    names.push_back(label->name);
            if (!names.empty())
                cut.tagName = cut.stamp.label + "(" + joined(names, "_") + ")";
        }
    }
    void add(const cuts::Screenshots&) {}
    void add(const cuts::DrawingsTimeline&) { addLine(drawingsLineId()); }

    template <class Visit>
    void forEachStamp(Visit&& visit) {
        for (const auto& line : input_.lines)
            for (const auto& stamp : line->stamps)
                visit(*line, *stamp);
    }

    template <class Matches>
    void addMatching(Matches&& matches) {
        forEachStamp([&](const TimelineLine& line, const TimelineStamp& stamp) {
            if (matches(stamp))
                addStamp(line, stamp);
        });
    }

    void addLine(const Uuid& id) {
        for (const auto& line : input_.lines)
            if (line->id == id) {
                for (const auto& stamp : line->stamps)
                    addStamp(*line, *stamp);
                return;
            }
    }

    void addStamp(const TimelineLine& line, const TimelineStamp& stamp) {
        if (const auto range = clamped(stamp))
            append(line, stamp, *range).groupName = groupOfTag(stamp.idTag, input_.library);
    }

    struct Range {
        double start;
        double length;
    };

    // A stamp that starts before 0 keeps its length. A stamp after the end of the video has no cut.
    std::optional<Range> clamped(const TimelineStamp& stamp) const {
        const double start = std::max(stamp.timeStartSeconds, 0.0);
        double length = stamp.length();
        if (start + length > videoDuration_)
            length = videoDuration_ - start;
        if (!(length > 0))
            return std::nullopt;
        return Range{start, length};
    }

    bool isFiltered(const std::string& tagName, const Range& range) {
        const double share = range.length / videoDuration_;
        if (range.start < nearStart && share > wholeVideoShare) {
            log_.line("Пропущен сегмент тега '" + tagName + "' в getSegmentsForExport: покрывает " +
                      logNumber(share * 100) + "% видео");
            return true;
        }
        if (range.length < shortestTagCut) {
            log_.line("Пропущен слишком короткий сегмент тега '" + tagName +
                      "': duration=" + logNumber(range.length));
            return true;
        }
        return false;
    }

    ExportSegment& append(const TimelineLine& line, const TimelineStamp& stamp,
                          const Range& range) {
        auto& cut = cuts_.emplace_back();
        cut.stamp = stamp;
        cut.tagName = stamp.label;
        cut.timeRange = {MediaTime::fromSeconds(range.start), MediaTime::fromSeconds(range.length)};
        cut.lineName = line.name;
        cut.stampId = stamp.id;
        return cut;
    }

    void nameLabel(const Label& label) {
        const auto* group = groupOfLabel(label.id, input_.library);
        for (auto& cut : cuts_) {
            cut.selectedLabel = label;
            if (group)
                cut.labelGroupName = group->name;
        }
    }

    const CutPlanInput& input_;
    Log& log_;
    const double videoDuration_;
    std::vector<ExportSegment> cuts_;
};

// The records with used ids, sorted by name.
template <class Record>
std::vector<Record> usedByName(const std::vector<Record>& records,
                               const std::set<std::string>& used) {
    std::vector<std::pair<std::string, const Record*>> found;
    for (const auto& record : records)
        if (used.contains(record.id))
            found.emplace_back(caseFolded(record.name), &record);
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Record> result;
    result.reserve(found.size());
    for (const auto& [name, record] : found)
        result.push_back(*record);
    return result;
}

template <class Collect>
std::set<std::string> idsOfStamps(const TimelineLines& lines, Collect&& collect) {
    std::set<std::string> ids;
    for (const auto& line : lines)
        for (const auto& stamp : line->stamps)
            collect(*stamp, ids);
    return ids;
}

}  // namespace

std::vector<ExportSegment> getSegmentsForExport(const CutsExportType& type,
                                                const CutPlanInput& input, Log& log) {
    return Planner(input, log).plan(type);
}

std::vector<OverlayLabelGroupItem> labelGroupsForStamp(const TimelineStamp& stamp,
                                                       const CollectionLists& library) {
    std::vector<OverlayLabelGroupItem> items;
    for (const auto& id : stamp.labels) {
        const auto* label = findById(library.labels, id);
        const auto* group = label ? groupOfLabel(id, library) : nullptr;
        if (!group)
            continue;
        auto item = std::find_if(items.begin(), items.end(),
                                 [&](const auto& known) { return known.group.id == group->id; });
        if (item == items.end())
            item = items.insert(items.end(), OverlayLabelGroupItem{*group, {}});
        item->selectedLabels.push_back(*label);
    }
    return items;
}

std::optional<Tag> overlayTag(const TimelineStamp& stamp, const CollectionLists& library) {
    if (const auto* tag = findById(library.tags, stamp.idTag))
        return *tag;
    if (!stamp.idTag.starts_with("screenshot_") || stamp.label.empty())
        return std::nullopt;
    Tag drawing;
    drawing.id = stamp.idTag;
    drawing.name = stamp.label;
    drawing.color = "808080";
    drawing.defaultTimeBefore = 3.0;
    drawing.defaultTimeAfter = 3.0;
    return drawing;
}

std::string logNumber(double value) {
    char buffer[32];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), value).ptr;
    std::string text(buffer, end);
    if (text.find_first_not_of("-0123456789") == std::string::npos)
        text += ".0";
    return text;
}

std::vector<Tag> tagsOnTimelines(const TimelineLines& lines, const CollectionLists& library) {
    return usedByName(library.tags, idsOfStamps(lines, [](const TimelineStamp& stamp, auto& ids) {
                          ids.insert(stamp.idTag);
                      }));
}

std::vector<Label> labelsOnTimelines(const TimelineLines& lines, const CollectionLists& library) {
    return usedByName(library.labels, idsOfStamps(lines, [](const TimelineStamp& stamp, auto& ids) {
                          ids.insert(stamp.labels.begin(), stamp.labels.end());
                      }));
}

std::vector<Label> labelsOfTag(const TimelineLines& lines, const CollectionLists& library,
                               const Tag& tag) {
    return usedByName(library.labels,
                      idsOfStamps(lines, [&](const TimelineStamp& stamp, auto& ids) {
                          if (stamp.idTag == tag.id)
                              ids.insert(stamp.labels.begin(), stamp.labels.end());
                      }));
}

std::vector<Tag> tagsOfLabel(const TimelineLines& lines, const CollectionLists& library,
                             const Label& label) {
    return usedByName(library.tags, idsOfStamps(lines, [&](const TimelineStamp& stamp, auto& ids) {
                          if (contains(stamp.labels, label.id))
                              ids.insert(stamp.idTag);
                      }));
}

std::vector<TimeEvent> eventsOnTimelines(const TimelineLines& lines,
                                         const CollectionLists& library) {
    return usedByName(library.timeEvents,
                      idsOfStamps(lines, [](const TimelineStamp& stamp, auto& ids) {
                          ids.insert(stamp.timeEvents.begin(), stamp.timeEvents.end());
                      }));
}

}  // namespace tembrix
