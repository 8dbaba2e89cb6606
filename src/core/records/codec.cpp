#include "core/records/codec.h"

#include "base/json.h"

#include "core/records/annotation_records.h"
#include "core/records/orphaned_timeline.h"
#include "core/records/record_fields.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"

namespace tembrix {

template <class Record>
Result<Bytes> encode(const Record& record, JsonStyle style) {
    return encodeJson(record, style);
}

template <class Record>
Result<Record> decode(BytesView json) {
    return decodeJson<Record>(json);
}

#define TEMBRIX_CODEC(Record)                                        \
    template Result<Bytes> encode<Record>(const Record&, JsonStyle); \
    template Result<Record> decode<Record>(BytesView);

TEMBRIX_CODEC(Tag)
TEMBRIX_CODEC(TagGroup)
TEMBRIX_CODEC(Label)
TEMBRIX_CODEC(LabelGroupData)
TEMBRIX_CODEC(TimeEvent)
TEMBRIX_CODEC(PlayField)
TEMBRIX_CODEC(CollectionData)
TEMBRIX_CODEC(TagGroupsData)
TEMBRIX_CODEC(TagsData)
TEMBRIX_CODEC(LabelGroupsData)
TEMBRIX_CODEC(LabelsData)
TEMBRIX_CODEC(TimeEventsData)
TEMBRIX_CODEC(CollectionInfo)
TEMBRIX_CODEC(std::vector<CollectionInfo>)
TEMBRIX_CODEC(CollectionBookmark)
TEMBRIX_CODEC(std::vector<CollectionBookmark>)
TEMBRIX_CODEC(TimelineStamp)
TEMBRIX_CODEC(TimelineLine)
TEMBRIX_CODEC(TimelineLines)
TEMBRIX_CODEC(StampDragInfo)
TEMBRIX_CODEC(VideosData)
TEMBRIX_CODEC(std::vector<VideosData>)
TEMBRIX_CODEC(VideosDataOldFormat)
TEMBRIX_CODEC(std::vector<VideosDataOldFormat>)
TEMBRIX_CODEC(VideoMetadata)
TEMBRIX_CODEC(OrphanedTimeline)

#undef TEMBRIX_CODEC

}  // namespace tembrix
