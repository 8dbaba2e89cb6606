#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/marking/marking_flow.h"
#include "fakes/core_project.h"

namespace tembrix {

// A player whose time and speed are set by the test.
struct StillPlayhead final : Playhead {
    double time = 0;
    double duration = 100;
    double speed = 1;
    bool playing = true;
    int plays = 0;

    double currentTime() const override { return time; }
    double videoDuration() const override { return duration; }
    double playbackSpeed() const override { return speed; }
    void play() override {
        playing = true;
        ++plays;
    }
    void pause() override { playing = false; }
    void seek(double seconds) override { time = seconds; }
    void setResizingTag(bool) override {}
};

// A field map that the test answers or leaves unanswered.
struct AnsweredFieldMap final : FieldMapQuestion {
    std::vector<Bytes> opened;
    std::function<void(Point)> answer;
    bool available = true;
    bool canAsk() const override { return available; }
    void openFieldMapSelection(const Tag&, const Bytes& imageBookmark,
                               std::function<void(Point)> chosen) override {
        opened.push_back(imageBookmark);
        answer = std::move(chosen);
    }
};

// The tag panel of an open video with a small collection.
struct MarkingProject : CoreProject {
    static constexpr const char* collectionName = "Mine";
    static constexpr const char* collectionId = "MINE";

    StillPlayhead playhead;
    AnsweredFieldMap fieldMap;
    MarkingFlow flow{timeline, tagLibrary, markupModes, collections,
                     playhead, fieldMap,   scheduler,   events};

    MarkingProject() {
        saveCollection(100);
        openVideo();
        flow.appear();
        flow.switchToUserCollection(collectionId);
        events.post(
            tembrix::events::CollectionDataChanged{});  // adds a new collection to the merged lists
        scheduler.run();
    }

    void saveCollection(double fieldWidth) {
        CollectionData data;
        data.id = collectionId;
        data.tags = {tag("pass"), tag("map"), tag("phase"), tag("other"), tag("goal")};
        data.tags[1].mapEnabled = true;
        data.tags[2].isInterval = data.tags[3].isInterval = true;
        data.tags[4].lablesGroup = {"team"};
        data.tags[4].labelHotkeys = std::map<std::string, std::string>{{"own", "1"}};
        data.tagGroups = {{"group", "All", {"pass", "map", "phase", "other", "goal"}}};
        data.labelGroups = {{"zone", "Zone", {"left"}}, {"team", "Team", {"own", "gone", "away"}}};
        data.labels = {{"own", "Own", ""}, {"away", "Away", ""}, {"left", "Left", ""}};
        data.timeEvents = {{"half1", "First half"}, {"half2", "Second half"}};
        data.playField = PlayField{"field", "Field", "", fieldWidth, 50, toBytes("picture")};
        storage.saveCollection(data);
        index.addOrUpdateCollection(data.id, collectionName);
    }

    // Stamps start 5 seconds before the press and end 3 seconds after it.
    static Tag tag(const std::string& id) {
        Tag tag;
        tag.id = tag.primaryID.emplace(id);
        tag.name = "Tag " + id;
        tag.color = "FF0000";
        tag.defaultTimeBefore = 5;
        tag.defaultTimeAfter = 3;
        return tag;
    }
    const Tag& known(const std::string& id) { return *tagLibrary.tagById(id); }

    std::vector<TimelineStamp> stamps() const {
        std::vector<TimelineStamp> all;
        for (const auto& line : *timeline.lines)
            for (const auto& stamp : line->stamps)
                all.push_back(*stamp);
        return all;
    }
    Uuid addLine(const std::string& name) {
        timeline.addLine(name);
        return timeline.lines->back()->id;
    }
};

}  // namespace tembrix
