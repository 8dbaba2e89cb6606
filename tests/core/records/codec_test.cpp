#include "core/records/codec.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"

namespace tembrix {
namespace {

template <class Record>
std::string written(const Record& record) {
    return std::string(asText(encode(record).value()));
}

// The error text, or empty if the document can be decoded.
template <class Record>
std::string failure(std::string_view json) {
    const auto result = decode<Record>(toBytes(json));
    return result ? "" : result.error().text;
}

constexpr std::string_view smallTag =
    R"({"id":"1","name":"Goal","description":"","color":"FF0000","defaultTimeBefore":5.5,)"
    R"("defaultTimeAfter":3.0,"lablesGroup":[]})";

constexpr std::string_view smallStamp =
    R"({"id":"00000000-0000-0000-0000-00000000000a","idTag":"t","timeStartSeconds":1,)"
    R"("timeFinishSeconds":2.5,"colorHex":"808080","label":"Pass","labels":[],"timeEvents":[]})";

TEST(Codec, WritesEveryKeyOfATagInTableOrder) {
    Tag tag{"1", "p", "Goal", "d", "FF0000", 5.5, 3, "Football", {"g"}, "cmd+a", {}, true, false};
    tag.labelHotkeys = std::map<std::string, std::string>{{"l", "b"}};
    EXPECT_EQ(written(tag),
              R"({"id":"1","primaryID":"p","name":"Goal","description":"d","color":"FF0000",)"
              R"("defaultTimeBefore":5.5,"defaultTimeAfter":3.0,"collection":"Football",)"
              R"("lablesGroup":["g"],"hotkey":"cmd+a","labelHotkeys":{"l":"b"},)"
              R"("mapEnabled":true,"isInterval":false})");
    EXPECT_EQ(decode<Tag>(encode(tag).value()).value(), tag);
}

// Texts without escapes are copied eight bytes at a time; a byte that needs one must not affect its
// neighbors.
TEST(Codec, EveryAsciiCharacterComesBackFromEveryPlaceOfAText) {
    for (char c = 0; c >= 0 && c < 0x7F; ++c) {
        for (std::size_t length : {1, 7, 8, 9, 17}) {
            for (std::size_t at = 0; at < length; ++at) {
                TimeEvent event{std::string(length, 'x'), "n"};
                event.id[at] = c;
                const auto read = decode<TimeEvent>(encode(event).value());
                ASSERT_TRUE(read && *read == event) << int{c} << " at " << at << " of " << length;
            }
        }
    }
}

TEST(Codec, AbsentOptionalKeysStayAbsent) {
    const auto tag = decode<Tag>(toBytes(smallTag));
    ASSERT_TRUE(tag);
    EXPECT_FALSE(tag->isInterval || tag->mapEnabled || tag->hotkey || tag->labelHotkeys ||
                 tag->collection || tag->primaryID);
    EXPECT_EQ(written(*tag), smallTag);
    EXPECT_EQ(failure<Tag>(R"({"hotkey":null,"unknown":[{}],)" + std::string(smallTag.substr(1))),
              "");
}

TEST(Codec, MissingOrMisspeltRequiredKeysFailTheWholeDocument) {
    std::string text(smallTag);
    text.replace(text.find("lablesGroup"), 11, "labelsGroup");
    EXPECT_EQ(failure<Tag>(text), "lablesGroup: required key is missing");
    EXPECT_EQ(failure<TimeEventsData>(R"({"timeEvents":[]})"), "events: required key is missing");
    EXPECT_EQ(failure<LabelGroupData>(R"({"id":"1","name":"n","labels":[]})"),
              "lables: required key is missing");
    EXPECT_EQ(failure<TimelineLine>(
                  R"({"id":"00000000-0000-0000-0000-000000000228","name":"","stamps":[]})"),
              "tagIdForMode: required key is missing");
    for (const std::string key : {"labels", "timeEvents"}) {
        std::string stamp(smallStamp);
        stamp.replace(stamp.find('"' + key + '"'), key.size() + 2, "\"other\"");
        EXPECT_EQ(failure<TimelineStamp>(stamp), key + ": required key is missing");
    }
}

TEST(Codec, OneBadElementFailsTheArrayAndIsNamed) {
    const std::string line =
        R"([{"id":"00000000-0000-0000-0000-000000000228","name":"n","tagIdForMode":"","stamps":[)" +
        std::string(smallStamp) + ",";
    std::string bad(smallStamp);
    bad.replace(bad.find("[]"), 2, "[7]");
    EXPECT_EQ(failure<TimelineLines>(line + bad + "]}]"), "[0].stamps[1].labels[0]: expected text");
    EXPECT_EQ(failure<TimelineLines>(line + "null]}]"), "[0].stamps[1]: expected an object");
    EXPECT_EQ(failure<TimelineLines>(line + std::string(smallStamp) + "]}]"), "");
}

TEST(Codec, TypesAreStrict) {
    const auto with = [](const std::string& key, const std::string& value) {
        std::string text(smallStamp);
        return text.insert(1, "\"" + key + "\":" + value + ",");
    };
    EXPECT_EQ(failure<TimelineStamp>(with("position", "[1,2.5]")), "");
    EXPECT_EQ(failure<TimelineStamp>(with("position", "null")), "");
    for (const auto* point : {"[1]", "[1,2,3]", "[1,\"2\"]", "{\"x\":1,\"y\":2}"})
        EXPECT_EQ(failure<TimelineStamp>(with("position", point)),
                  "position: expected a point [x, y]");
    EXPECT_EQ(failure<TimelineStamp>(with("isActiveForMapView", "1")),
              "isActiveForMapView: expected true or false");
    std::string text(smallStamp);
    text.replace(text.find("\"timeStartSeconds\":1"), 20, "\"timeStartSeconds\":\"1\"");
    EXPECT_EQ(failure<TimelineStamp>(text), "timeStartSeconds: expected a number");
    EXPECT_EQ(failure<StampDragInfo>(R"({"lineID":"x","stampID":"y"})"), "lineID: expected a UUID");
    EXPECT_NE(failure<VideosData>(R"({"bookmark":"A","id":"1"})"), "");
}

TEST(Codec, DocumentsThatAreNoJsonFail) {
    for (const std::string bad :
         {"", "[", "[1,]", "[] []", "{}", "null", "\xEF\xBB\xBF[", "[1e999]", "[\"\xFF\"]"})
        EXPECT_NE(failure<TimelineLines>(bad), "") << bad;
    EXPECT_NE(failure<TimelineLines>(std::string_view("[]\0", 3)), "");
    EXPECT_NE(failure<TimelineLines>(std::string_view("\0", 1)), "");
    // Deep nesting must fail without a crash.
    EXPECT_NE(failure<TimelineLines>(std::string(2000000, '[')), "");
}

TEST(Codec, DoublesSurviveBitForBit) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> seconds(0, 20000);
    for (int i = 0; i < 20000; ++i) {
        TimelineStamp stamp;
        stamp.timeStartSeconds = seconds(random);
        stamp.timeFinishSeconds = std::ldexp(seconds(random), static_cast<int>(i % 200) - 100);
        const auto back = decode<TimelineStamp>(encode(stamp).value()).value();
        ASSERT_EQ(back.timeStartSeconds, stamp.timeStartSeconds);
        ASSERT_EQ(back.timeFinishSeconds, stamp.timeFinishSeconds);
    }
}

TEST(Codec, ANumberThatJsonCannotHoldIsAFailureAtAnyDepthAndStyle) {
    TimelineStamp stamp;
    stamp.position = Point{0, std::nan("")};
    TimelineLine line;
    line.stamps.push_back(stamp);
    EXPECT_EQ(encode(TimelineLines{line}).error().domain, "json");
    PlayField field;
    field.width = INFINITY;
    EXPECT_FALSE(encode(field));
    EXPECT_FALSE(encode(field, JsonStyle::pretty));
}

TEST(Codec, EveryTextComesBack) {
    Label label{"id", "кавычки \" \\ / \n \x01 ⚽", std::string("a\0b", 3)};
    EXPECT_EQ(decode<Label>(encode(label).value()).value(), label);
    EXPECT_EQ(decode<Label>(encode(label, JsonStyle::pretty).value()).value(), label);
    label.name = "half\xD0";  // a name from a damaged file system must still give a valid document
    EXPECT_EQ(decode<Label>(encode(label).value()).value().name, "half\xEF\xBF\xBD");
}

TEST(Codec, DatesCountFromTheirOwnEpochAndBookmarksAreBase64) {
    VideoMetadata match{"A", "B", "2-1", Date{Date::epoch2001 + 86400.5}, std::nullopt};
    EXPECT_EQ(written(match), R"({"team1":"A","team2":"B","score":"2-1","dateTime":86400.5})");
    match.urlString = "file:///a%20b.mp4";
    EXPECT_EQ(decode<VideoMetadata>(encode(match).value()).value(), match);
    const VideosData video{toBytes("foob"), "ID", std::nullopt, true};
    EXPECT_EQ(written(std::vector{video}),
              R"([{"bookmark":"Zm9vYg==","id":"ID","isFavorite":true}])");
}

TEST(Codec, DatesThatWereReadAreWrittenAsTheSameNumber) {
    std::mt19937_64 random(17);
    std::uniform_real_distribution<double> recent(0, 1.2e9), any(-3e9, 1e11), small(-1, 1);
    VideoMetadata match{"A", "B", "2-1", {}, std::nullopt};
    for (int i = 0; i < 30000; ++i) {
        const double number = i % 3 == 0   ? recent(random)
                              : i % 3 == 1 ? any(random)
                                           : small(random);
        match.dateTime = Date::fromSecondsSince2001(number);
        ASSERT_EQ(match.dateTime.secondsSince2001(), number);
        if (i % 10 != 0)
            continue;
        const auto document = encode(match).value();
        const auto read = decode<VideoMetadata>(document).value();
        ASSERT_EQ(read.dateTime, match.dateTime);
        ASSERT_EQ(encode(read).value(), document);
    }
    // A date from the system clock is read back exactly.
    for (const double seconds : {1714588200.0625, 1795411234.123456, 0.25}) {
        match.dateTime = Date{seconds};
        const auto read = decode<VideoMetadata>(encode(match).value()).value();
        EXPECT_EQ(read.dateTime, Date{seconds});
    }
}

TEST(Codec, TheNewFormOfALibraryIsNotTheOldOne) {
    const auto now = encode(std::vector{VideosData{{1}, "ID", "name", false}}).value();
    EXPECT_FALSE(decode<std::vector<VideosDataOldFormat>>(now));
    const auto old = encode(std::vector{VideosDataOldFormat{{1}, "ID", {}, "name", {}}}).value();
    EXPECT_TRUE(decode<std::vector<VideosDataOldFormat>>(old));
    EXPECT_EQ(decode<std::vector<VideosData>>(old).value().front().customName, "name");
}

TEST(Records, AFormUsesDefaultsForMissingFieldsOfATag) {
    const auto form = tagFormData(decode<Tag>(toBytes(smallTag)).value());
    EXPECT_TRUE(form.labelHotkeys.empty());
    EXPECT_FALSE(form.mapEnabled || form.isInterval);
    EXPECT_EQ(form.color, (Color{1, 0, 0, 1}));
    EXPECT_EQ(form.hexColor, "FF0000");
}

TEST(Records, AVideoNameJoinsTrimmedPartsWithoutBlanks) {
    const VideoMetadata match{" Red Lions ", "Blue  Foxes", "2-1", Date{1}, std::nullopt};
    const auto name = match.videoName(
        [](Date date) { return date == Date{1} ? "2024-05-01_18-30" : "another date"; });
    EXPECT_EQ(name, "Red_Lions_Blue__Foxes_2-1_2024-05-01_18-30");
}

}  // namespace
}  // namespace tembrix
