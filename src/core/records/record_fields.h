#pragma once

// The field tables of the shared records. Each key is defined only here; fields are written in this
// order. Codecs of records that contain these include this file and json.h.

#include "base/json.h"

#include "core/records/annotation_records.h"
#include "core/records/orphaned_timeline.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"

namespace tembrix {

template <>
struct JsonFields<Tag> {
    static constexpr auto fields = std::make_tuple(
        json::required("id", &Tag::id), json::optional("primaryID", &Tag::primaryID),
        json::required("name", &Tag::name), json::required("description", &Tag::description),
        json::required("color", &Tag::color),
        json::required("defaultTimeBefore", &Tag::defaultTimeBefore),
        json::required("defaultTimeAfter", &Tag::defaultTimeAfter),
        json::optional("collection", &Tag::collection),
        json::required("lablesGroup", &Tag::lablesGroup), json::optional("hotkey", &Tag::hotkey),
        json::optional("labelHotkeys", &Tag::labelHotkeys),
        json::optional("mapEnabled", &Tag::mapEnabled),
        json::optional("isInterval", &Tag::isInterval));
};

template <>
struct JsonFields<TagGroup> {
    static constexpr auto fields = std::make_tuple(json::required("id", &TagGroup::id),
                                                   json::required("name", &TagGroup::name),
                                                   json::required("tags", &TagGroup::tags));
};

template <>
struct JsonFields<Label> {
    static constexpr auto fields =
        std::make_tuple(json::required("id", &Label::id), json::required("name", &Label::name),
                        json::required("description", &Label::description));
};

template <>
struct JsonFields<LabelGroupData> {
    static constexpr auto fields = std::make_tuple(
        json::required("id", &LabelGroupData::id), json::required("name", &LabelGroupData::name),
        json::required("lables", &LabelGroupData::lables));
};

template <>
struct JsonFields<TimeEvent> {
    static constexpr auto fields = std::make_tuple(json::required("id", &TimeEvent::id),
                                                   json::required("name", &TimeEvent::name));
};

template <>
struct JsonFields<PlayField> {
    static constexpr auto fields = std::make_tuple(
        json::required("id", &PlayField::id), json::required("name", &PlayField::name),
        json::required("imagePath", &PlayField::imagePath),
        json::required("width", &PlayField::width), json::required("height", &PlayField::height),
        json::optional("imageBookmark", &PlayField::imageBookmark));
};

template <>
struct JsonFields<CollectionData> {
    static constexpr auto fields =
        std::make_tuple(json::required("id", &CollectionData::id),
                        json::required("tagGroups", &CollectionData::tagGroups),
                        json::required("tags", &CollectionData::tags),
                        json::required("labelGroups", &CollectionData::labelGroups),
                        json::required("labels", &CollectionData::labels),
                        json::required("timeEvents", &CollectionData::timeEvents),
                        json::optional("playField", &CollectionData::playField));
};

template <>
struct JsonFields<TagGroupsData> {
    static constexpr auto fields =
        std::make_tuple(json::required("tagGroups", &TagGroupsData::tagGroups));
};

template <>
struct JsonFields<TagsData> {
    static constexpr auto fields = std::make_tuple(json::required("tags", &TagsData::tags));
};

template <>
struct JsonFields<LabelGroupsData> {
    static constexpr auto fields =
        std::make_tuple(json::required("labelGroups", &LabelGroupsData::labelGroups));
};

template <>
struct JsonFields<LabelsData> {
    static constexpr auto fields = std::make_tuple(json::required("labels", &LabelsData::labels));
};

template <>
struct JsonFields<TimeEventsData> {
    static constexpr auto fields =
        std::make_tuple(json::required("events", &TimeEventsData::events));
};

template <>
struct JsonFields<CollectionInfo> {
    static constexpr auto fields = std::make_tuple(json::required("id", &CollectionInfo::id),
                                                   json::required("name", &CollectionInfo::name));
};

template <>
struct JsonFields<CollectionBookmark> {
    static constexpr auto fields = std::make_tuple(
        json::required("id", &CollectionBookmark::id),
        json::required("name", &CollectionBookmark::name),
        json::required("tagGroupsBookmark", &CollectionBookmark::tagGroupsBookmark),
        json::required("tagsBookmark", &CollectionBookmark::tagsBookmark),
        json::required("labelGroupsBookmark", &CollectionBookmark::labelGroupsBookmark),
        json::required("labelsBookmark", &CollectionBookmark::labelsBookmark),
        json::required("timeEventsBookmark", &CollectionBookmark::timeEventsBookmark),
        json::optional("playFieldBookmark", &CollectionBookmark::playFieldBookmark));
};

template <>
struct JsonFields<TimelineStamp> {
    static constexpr auto fields = std::make_tuple(
        json::required("id", &TimelineStamp::id), json::required("idTag", &TimelineStamp::idTag),
        json::optional("primaryID", &TimelineStamp::primaryID),
        json::required("timeStartSeconds", &TimelineStamp::timeStartSeconds),
        json::required("timeFinishSeconds", &TimelineStamp::timeFinishSeconds),
        json::required("colorHex", &TimelineStamp::colorHex),
        json::required("label", &TimelineStamp::label),
        json::optional("isActiveForMapView", &TimelineStamp::isActiveForMapView),
        json::required("labels", &TimelineStamp::labels),
        json::required("timeEvents", &TimelineStamp::timeEvents),
        json::optional("position", &TimelineStamp::position));
};

template <>
struct JsonFields<TimelineLine> {
    static constexpr auto fields = std::make_tuple(
        json::required("id", &TimelineLine::id), json::required("name", &TimelineLine::name),
        json::required("stamps", &TimelineLine::stamps),
        json::required("tagIdForMode", &TimelineLine::tagIdForMode));
};

template <>
struct JsonFields<StampDragInfo> {
    static constexpr auto fields =
        std::make_tuple(json::required("lineID", &StampDragInfo::lineID),
                        json::required("stampID", &StampDragInfo::stampID));
};

template <>
struct JsonFields<VideosData> {
    static constexpr auto fields = std::make_tuple(
        json::required("bookmark", &VideosData::bookmark), json::required("id", &VideosData::id),
        json::optional("customName", &VideosData::customName),
        json::optional("isFavorite", &VideosData::isFavorite));
};

template <>
struct JsonFields<VideosDataOldFormat> {
    static constexpr auto fields =
        std::make_tuple(json::required("bookmark", &VideosDataOldFormat::bookmark),
                        json::required("id", &VideosDataOldFormat::id),
                        json::required("timelines", &VideosDataOldFormat::timelines),
                        json::optional("customName", &VideosDataOldFormat::customName),
                        json::optional("isFavorite", &VideosDataOldFormat::isFavorite));
};

template <>
struct JsonFields<VideoMetadata> {
    static constexpr auto fields =
        std::make_tuple(json::required("team1", &VideoMetadata::team1),
                        json::required("team2", &VideoMetadata::team2),
                        json::required("score", &VideoMetadata::score),
                        json::required("dateTime", &VideoMetadata::dateTime),
                        json::optional("urlString", &VideoMetadata::urlString));
};

template <>
struct JsonFields<OrphanedTimeline> {
    static constexpr auto fields =
        std::make_tuple(json::required("videoId", &OrphanedTimeline::videoId),
                        json::optional("videoName", &OrphanedTimeline::videoName),
                        json::required("timelines", &OrphanedTimeline::timelines),
                        json::optional("customName", &OrphanedTimeline::customName),
                        json::optional("isFavorite", &OrphanedTimeline::isFavorite),
                        json::required("backupDate", &OrphanedTimeline::backupDate));
};

}  // namespace tembrix
