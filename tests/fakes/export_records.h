#pragma once

#include <string>
#include <utility>
#include <vector>

#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// A small match: two tag groups, two label groups, two time events, and helpers to create stamps.
// Ids equal the keys; names are what a user reads.
struct MatchRecords {
    Tag pass = tag("pass", "Пас");
    Tag shot = tag("shot", "Shot");
    Label longLabel{"long", "Длинный", ""};
    Label exact{"exact", "Точный", ""};
    Label lost{"lost", "Lost", ""};
    Label loose{"loose", "Loose", ""};  // in no group
    TimeEvent half{"half", "First half"};
    TimeEvent press{"press", "Press"};

    CollectionLists library{
        {pass, shot},
        {{"g1", "Ball", {"pass"}}, {"g2", "Goal", {"shot"}}},
        {{"lg1", "Range", {"long"}}, {"lg2", "Outcome", {"exact", "lost"}}},
        {longLabel, exact, lost, loose},
        {half, press},
    };

    static Tag tag(const std::string& id, const std::string& name) {
        Tag result;
        result.id = id;
        result.name = name;
        result.color = "FF0000";
        return result;
    }

    static TimelineStamp stamp(const std::string& tagId, const std::string& label, double start,
                               double finish, std::vector<std::string> labels = {},
                               std::vector<std::string> events = {}) {
        TimelineStamp result;
        result.id = Uuid::random();
        result.idTag = tagId;
        result.timeStartSeconds = start;
        result.timeFinishSeconds = finish;
        result.colorHex = "FF0000";
        result.label = label;
        result.labels = std::move(labels);
        result.timeEvents = std::move(events);
        return result;
    }

    static TimelineLine line(const std::string& name, std::vector<TimelineStamp> stamps) {
        TimelineLine result{Uuid::random(), name, {}, ""};
        for (auto& each : stamps)
            result.stamps.emplace_back(std::move(each));
        return result;
    }
};

}  // namespace tembrix
