#include "base/utf8_text.h"

#include "ports/texts.h"

#include "core/export/cut_planning.h"
#include "core/export/cut_records.h"
#include "core/export/file_names.h"
#include "core/records/annotation_records.h"

namespace tembrix {

namespace {

using Parts = std::vector<std::string>;

std::string orElse(const std::optional<std::string>& name, std::string_view fallback) {
    return name.value_or(std::string(fallback));
}

template <class Record>
void appendNames(Parts& parts, const std::vector<Record>& records) {
    for (const auto& record : records)
        parts.push_back(record.name);
}

std::string fileName(const Parts& parts, const std::string& ending) {
    return portableFileName(joined(parts, "_"), "_" + ending);
}

struct FilmParts {
    const ExportSegment& first;
    const Texts& texts;

    Parts operator()(const cuts::TagCuts& type) const {
        return {orElse(first.groupName, "group"), type.selectedTag.name};
    }
    Parts operator()(const cuts::TimeEventCuts& type) const {
        return {type.selectedEvent.name, first.tagName};
    }
    Parts operator()(const cuts::LabelCuts& type) const { return {type.selectedLabel.name}; }
    Parts operator()(const cuts::TagWithLabels& type) const {
        Parts parts{type.selectedTag.name};
        appendNames(parts, type.selectedLabels);
        return parts;
    }
    Parts operator()(const cuts::LabelWithTags& type) const {
        Parts parts{type.selectedLabel.name};
        appendNames(parts, type.selectedTags);
        return parts;
    }
    Parts operator()(const cuts::CurrentTimeline&) const {
        return {orElse(first.lineName, "timeline")};
    }
    Parts operator()(const cuts::AllTimelines&) const {
        return {orElse(first.groupName, "group"), first.tagName};
    }
    Parts operator()(const cuts::Screenshots&) const { return {}; }
    Parts operator()(const cuts::DrawingsTimeline&) const {
        return {texts.text("drawingsTimelineName"), "Фильм"};
    }
};

struct ClipParts {
    const ExportSegment& cut;
    const CollectionLists& library;
    const Texts& texts;

    Parts operator()(const cuts::TagCuts& type) const {
        return {orElse(cut.groupName, "group"), type.selectedTag.name};
    }
    Parts operator()(const cuts::TimeEventCuts& type) const {
        return {type.selectedEvent.name, cut.tagName};
    }
    Parts operator()(const cuts::LabelCuts& type) const { return labelParts(type.selectedLabel); }
    Parts operator()(const cuts::TagWithLabels& type) const {
        Parts parts{orElse(cut.groupName, "group"), type.selectedTag.name};
        for (const auto& id : cut.stamp.labels)
            for (const auto& label : library.labels)
                if (label.id == id)
                    parts.push_back(label.name);
        return parts;
    }
    Parts operator()(const cuts::LabelWithTags& type) const {
        return labelParts(type.selectedLabel);
    }
    Parts operator()(const cuts::CurrentTimeline&) const { return {lineName(), cut.tagName}; }
    Parts operator()(const cuts::AllTimelines&) const {
        return {lineName(), orElse(cut.groupName, "group"), cut.tagName};
    }
    Parts operator()(const cuts::Screenshots&) const { return {}; }
    Parts operator()(const cuts::DrawingsTimeline&) const {
        return {texts.text("drawingsTimelineName"), cut.tagName};
    }

    Parts labelParts(const Label& label) const {
        return {orElse(cut.labelGroupName, "Labels"), label.name, cut.tagName};
    }
    std::string lineName() const {
        return cut.lineName ? *cut.lineName : texts.text("fullControlFileTimeline");
    }
};

}  // namespace

std::string filmFileName(const CutsExportType& type, const std::vector<ExportSegment>& segments,
                         const Texts& texts) {
    return fileName(std::visit(FilmParts{segments.front(), texts}, type),
                    texts.text("fullControlFileTimelineFile"));
}

std::string clipFileName(const CutsExportType& type, const ExportSegment& segment,
                         std::size_t position, const CollectionLists& library, const Texts& texts) {
    return fileName(std::visit(ClipParts{segment, library, texts}, type),
                    std::to_string(position) + ".mp4");
}

}  // namespace tembrix
