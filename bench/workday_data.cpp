#include "workday_data.h"

#include <cstdlib>
#include <fmt/format.h>
#include <optional>
#include <string_view>
#include <vector>

#include "base/files.h"

#include "adapters/qt/file_bookmarks.h"
#include "adapters/qt/file_keychain.h"
#include "adapters/qt/qt_directories.h"
#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/composition/core_services.h"
#include "core/records/codec.h"
#include "core/records/video_records.h"
#include "core/storage/data_layout.h"
#include "fakes/fake_platform.h"
#include "fixtures/match_video.h"

namespace tembrix {
namespace {

constexpr double rawSeconds = 20;
constexpr double clipSeconds = 2;
constexpr const char* colors[] = {"30D158", "0A84FF", "FF9F0A", "BF5AF2",
                                  "FFD60A", "64D2FF", "8E8E93"};
constexpr const char* matchId = "0123456789ABCDEF0123456789ABCDEF";

// The stored data of the user without a running program.
struct Store : FakePlatform {
    SqliteUserDefaults defaults{programDataFolder() / layout::defaultsFile, log};
    FileBookmarks bookmarks;
    FileKeychain keychain{programStateFolder() / "keychain", log};
    CoreServices core{platform({.directories = qtDirectories(),
                                .defaults = &defaults,
                                .keychain = &keychain,
                                .bookmarks = &bookmarks}),
                      noWindows};
    InMemoryStorageManager& storage = core.storage;
    CollectionsBookmarksManager& index = core.index;
    CollectionServices& collections = core.collections;
};

bool makeVideo(const std::filesystem::path& file, const MatchVideo& video) {
    std::error_code ignored;
    if (std::filesystem::exists(file, ignored))
        return true;
    const auto part = file.parent_path() / ("making-" + file.filename().string());
    if (!makeMatchVideo(video, part))
        return false;
    std::filesystem::rename(part, file);
    return true;
}

// Repeats a short recording until it has the length of a match, without encoding it again.
bool makeMatch(const std::filesystem::path& raw, const std::filesystem::path& file) {
    const int more = static_cast<int>(WorkdayData::matchSeconds / rawSeconds) - 1;
    const auto command =
        fmt::format("ffmpeg -nostdin -v error -y -stream_loop {} -i '{}' -c copy '{}'", more,
                    raw.string(), file.string());
    return std::system(command.c_str()) == 0;
}

TagFormData tagForm(int group, int place, const std::vector<LabelGroupData>& labelGroups) {
    TagFormData form;
    form.name = fmt::format("Action {}.{}", group + 1, place + 1);
    form.description = "What the analyst saw";
    form.hexColor = colors[(group + place) % 7];
    form.defaultTimeBefore = 5;
    form.defaultTimeAfter = 3;
    const std::string_view keys = WorkdayData::keys;
    if (group == 0 && place < static_cast<int>(keys.size()))
        form.hotkey = std::string(1, keys[static_cast<std::size_t>(place)]);
    else if (!labelGroups.empty())
        form.selectedLabelGroups = {
            labelGroups[static_cast<std::size_t>(group) % labelGroups.size()].id};
    form.isInterval = group == WorkdayData::tagGroups - 1;
    return form;
}

bool addCollection(Store& store, int number) {
    CustomCollectionManager collection(store.collections);
    collection.setCollectionName(WorkdayData::collectionName(number));
    std::vector<LabelGroupData> labelGroups;
    for (int i = 0; i < WorkdayData::labels; ++i) {
        if (i % 10 == 0)
            labelGroups.push_back(collection.addLabelGroup(fmt::format("Labels {}", i / 10 + 1)));
        collection.addLabel(fmt::format("Label {}", i + 1), "", labelGroups.back().id);
    }
    for (int g = 0; g < WorkdayData::tagGroups; ++g) {
        const auto group = collection.addTagGroup(fmt::format("Phase {}.{}", number, g + 1));
        for (int t = 0; t < WorkdayData::tagsPerGroup; ++t) {
            const TagFormData form = tagForm(g, t, labelGroups);
            const auto tag = collection.addTag(form, group.id);
            if (!tag || !collection.updateTag(tag->id, form))
                return false;
        }
    }
    for (int i = 0; i < WorkdayData::timeEvents; ++i)
        collection.addTimeEvent(fmt::format("Period {}", i + 1));
    return collection.saveCollection();
}

TimelineLines timelines(const std::vector<Tag>& tags, int lineCount, int stampsPerLine) {
    TimelineLines lines;
    for (int l = 0; l < lineCount; ++l) {
        TimelineLine line{Uuid::random(), fmt::format("Line {}", l + 1), {}, {}};
        for (int s = 0; s < stampsPerLine; ++s) {
            const Tag& tag = tags[static_cast<std::size_t>(l + s) % tags.size()];
            TimelineStamp stamp;
            stamp.id = Uuid::random();
            stamp.idTag = tag.id;
            stamp.primaryID = tag.primaryID;
            stamp.timeStartSeconds = s * (WorkdayData::matchSeconds - 20) / stampsPerLine + l / 7.0;
            stamp.timeFinishSeconds = stamp.timeStartSeconds + 8.0;
            stamp.colorHex = tag.color;
            stamp.label = tag.name;
            stamp.isActiveForMapView = false;
            stamp.labels = {freshId(), freshId()};
            line.stamps.push_back(std::move(stamp));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

int count(const TimelineLines& lines) {
    int count = 0;
    for (const auto& line : lines)
        count += static_cast<int>(line->stamps.size());
    return count;
}

}  // namespace

std::string WorkdayData::collectionName(int number) {
    return fmt::format("Collection {:02}", number);
}

std::string WorkdayData::matchName() {
    return "Today_Red Lions_Blue Foxes";
}

bool WorkdayData::write(const std::filesystem::path& scratch) {
    const auto films = qtDirectories().documents / "films";
    std::filesystem::create_directories(films);
    MatchVideo match;
    match.width = 1920;
    match.height = 1080;
    match.seconds = rawSeconds;
    match.quality = 30;
    MatchVideo clip;
    clip.seconds = clipSeconds;
    const auto rawMatch = scratch / "workday-match.mp4";
    const auto rawClip = scratch / "workday-clip.mp4";
    if (!makeVideo(rawMatch, match) || !makeVideo(rawClip, clip) ||
        !makeMatch(rawMatch, films / "match.mp4"))
        return false;

    Store store;
    for (int i = 1; i <= collections; ++i)
        if (!addCollection(store, i))
            return false;
    store.defaults.setText(layout::lastSelectedCollectionKey, collectionName(1));
    const auto tags = store.storage.loadCollection(store.index.collections().front().id)->tags;
    std::vector<VideosData> library{
        {*store.bookmarks.make(films / "match.mp4"), matchId, matchName(), true}};
    TimelineLines project = timelines(tags, lines, stampsPerLine);
    project.insert(project.begin(), TimelineLine{drawingsLineId(), "Drawings", {}, {}});
    store.storage.saveTimeline(project, matchId);
    for (int i = 1; i < videos; ++i) {
        const auto file = films / fmt::format("other {}.mp4", i);
        std::filesystem::copy_file(rawClip, file);
        const std::string id = freshId();
        library.push_back({*store.bookmarks.make(file), id,
                           fmt::format("Round {}_Home {}_Guests {}", i % 38, i % 20, i % 19),
                           i % 7 == 0});
        store.storage.saveTimeline(timelines(tags, 10, 40), id);
    }
    store.defaults.setData(layout::videosDataKey, *encode(library));
    store.storage.flushNow();
    store.index.saveNow();
    store.scheduler.run();
    return true;
}

int WorkdayData::storedStamps() {
    Store store;
    const auto value = store.defaults.data(layout::timelineKey(matchId));
    const auto lines = value ? decode<TimelineLines>(*value).optional() : std::nullopt;
    return lines ? count(*lines) : -1;
}

int WorkdayData::durableStamps() {
    const auto file = readFile(qtDirectories().documents / layout::dataFolder /
                               layout::timelinesFolder / (std::string(matchId) + ".json"));
    const auto lines = file ? decode<TimelineLines>(*file).optional() : std::nullopt;
    return lines ? count(*lines) : -1;
}

}  // namespace tembrix
