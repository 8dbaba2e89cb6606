#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// A simple model of the content of both stores and of the backup, to which a test compares the
// program.
struct TwoStoresModel {
    struct Video {
        std::string id;
        std::string name;
        bool operator==(const Video&) const = default;
    };
    template <class Value>
    using ById = std::map<std::string, Value>;

    struct Backup {
        ById<CollectionData> collections;
        ById<TimelineLines> timelines;  // of deleted videos, too
        std::optional<std::vector<CollectionInfo>> index;
        std::optional<std::vector<Video>> videos;
    };

    // Working copies.
    std::vector<Video> videos;
    ById<TimelineLines> timelines;
    ById<CollectionData> collections;
    bool backupNoted = false;
    bool unfinishedRestore = false;
    std::optional<std::vector<CollectionInfo>> unsavedIndex, indexCopy;
    // Durable copies.
    ById<TimelineLines> timelineFiles;
    ById<CollectionData> folders;
    std::optional<std::vector<CollectionInfo>> indexFile;
    Backup backup;
    // State in the memory of one run of the program.
    std::vector<CollectionInfo> index;
    double now = 0;
    std::optional<double> flushDue, indexDue, backupDue;
    bool indexBeforeBackup = false;  // the order of timers due at the same time

    template <class Value>
    static std::optional<Value> load(ById<Value>& working, const ById<Value>& durable,
                                     const std::string& id) {
        if (const auto found = working.find(id); found != working.end())
            return found->second;
        const auto file = durable.find(id);
        if (file == durable.end())
            return std::nullopt;
        return working[id] = file->second;
    }
    TimelineLines timeline(const std::string& id) {
        return load(timelines, timelineFiles, id).value_or(TimelineLines{});
    }
    std::optional<CollectionData> collection(const std::string& id) {
        return load(collections, folders, id);
    }
    void loadListed() {
        for (const auto& row : index)
            collection(row.id);
    }

    void armFlush() { flushDue = flushDue.value_or(now + 30); }
    void armIndex() {
        indexDue = indexDue.value_or(now + 2);
        unsavedIndex = index;
    }

    void saveTimeline(const std::string& id, const TimelineLines& lines) {
        timelines[id] = lines;
        armFlush();
    }
    void saveCollection(const CollectionData& data, const std::string& name) {
        collections[data.id] = data;
        armFlush();
        list({data.id, name});
    }
    void list(const CollectionInfo& row) {
        const auto known = std::find_if(index.begin(), index.end(),
                                        [&](const auto& one) { return one.id == row.id; });
        if (known == index.end())
            index.push_back(row);
        else
            *known = row;
        armIndex();
    }
    void deleteCollection(const std::string& id) {
        collections.erase(id);
        std::erase_if(index, [&](const auto& row) { return row.id == id; });
        armFlush();
        armIndex();
        loadListed();
    }
    void deleteVideo(const std::string& id) {
        if (const auto lines = timeline(id); !lines.empty())
            backup.timelines[id] = lines;
        timelines.erase(id);
        timelineFiles.erase(id);
        std::erase_if(videos, [&](const auto& video) { return video.id == id; });
    }

    // An empty list is used only if the file is empty as well.
    bool mayBeListed(const std::string& id) const {
        if (index.empty() && !indexFile)
            return true;
        const auto& rows = index.empty() ? *indexFile : index;
        return std::any_of(rows.begin(), rows.end(), [&](const auto& row) { return row.id == id; });
    }
    void flush() {
        for (const auto& [id, lines] : timelines)
            timelineFiles[id] = lines;
        std::erase_if(folders, [&](const auto& folder) {
            return !collections.contains(folder.first) && !mayBeListed(folder.first);
        });
        for (const auto& [id, data] : collections)
            folders[id] = data;
    }
    void writeIndex() {
        if (indexDue)
            indexFile = indexCopy = index;
        indexDue.reset();
        indexBeforeBackup = false;
        unsavedIndex.reset();
    }
    void backUp() {
        flush();
        writeIndex();
        std::erase_if(backup.collections, [&](const auto& copy) {
            return !mayBeListed(copy.first) && !collections.contains(copy.first) &&
                   !folders.contains(copy.first);
        });
        for (const auto& row : index)
            if (const auto folder = folders.find(row.id); folder != folders.end())
                backup.collections[row.id] = folder->second;
        for (const auto& video : videos)
            if (const auto lines = timeline(video.id); !lines.empty())
                backup.timelines[video.id] = lines;
        if (indexFile)
            backup.index = indexFile;
        backup.videos = videos;
        backupNoted = true;
    }
    // Applies the first `steps` of the four copy operations of a restore. A complete restore also
    // reads the files.
    void restoreFiles(int steps) {
        if (steps >= 1 && !backup.collections.empty())
            folders = backup.collections;
        if (steps >= 2 && !backup.timelines.empty())
            timelineFiles = backup.timelines;
        if (steps >= 3 && backup.index) {
            indexFile = indexCopy = backup.index;
            index = *backup.index;
            indexDue.reset();
            unsavedIndex.reset();
        }
        if (steps >= 4)
            listUnlisted();
        if (steps >= 4 && backup.videos)
            videos = *backup.videos;
    }
    // After a restore, folders that are not listed are listed again.
    void listUnlisted() {
        for (const auto& [id, data] : folders)
            if (std::none_of(index.begin(), index.end(),
                             [&id = id](const auto& row) { return row.id == id; })) {
                collection(id);
                list({id, lastKnownName(id)});
            }
    }
    std::string lastKnownName(const std::string& id) const {
        for (const auto& rows : {indexCopy, indexFile, backup.index})
            for (const auto& row : rows.value_or(std::vector<CollectionInfo>()))
                if (row.id == id)
                    return row.name;
        return id;
    }
    void restore() {
        flush();
        restoreFiles(4);
        loadListed();
    }
    // After lost defaults, values read from the documents are replaced by those of the backup.
    void restoreAtLaunch(const std::vector<std::string>& filledTimelines,
                         const std::vector<std::string>& filledCollections) {
        for (const auto& id : filledTimelines)
            if (backup.timelines.contains(id))
                timelines.erase(id);
        for (const auto& id : filledCollections)
            if (backup.index || backup.collections.contains(id))
                collections.erase(id);
        restoreFiles(4);
        backupNoted = true;
    }

    void launch() {
        now = 0;
        flushDue = indexDue = std::nullopt;
        index = indexFile.value_or(std::vector<CollectionInfo>{});
        if (unsavedIndex) {
            index = *unsavedIndex;
            armIndex();
        }
        // A lost index is restored from its copies for the collections that still exist.
        if (!indexFile && index.empty())
            for (const auto& row : (indexCopy ? indexCopy : backup.index).value_or(index))
                if (collection(row.id))
                    list(row);
        if (std::exchange(unfinishedRestore, false))
            restoreFiles(4);
        std::vector<std::string> filledTimelines, filledCollections;
        for (const auto& [id, lines] : timelineFiles)
            if (timelines.insert({id, lines}).second)
                filledTimelines.push_back(id);
        for (const auto& row : index)
            if (!collections.contains(row.id) && collection(row.id))
                filledCollections.push_back(row.id);
        if (backup.videos && !backupNoted)
            restoreAtLaunch(filledTimelines, filledCollections);
        loadListed();
        indexBeforeBackup = indexDue.has_value();
        backupDue = now + 2;
    }
    void pass(double seconds) {
        const double end = now + seconds;
        for (;;) {
            double next = end;
            for (const auto& due : {indexDue, flushDue, backupDue})
                next = std::min(next, due.value_or(end));
            now = next;
            const auto fires = [&](std::optional<double>& due) { return due && *due <= now; };
            if (fires(indexDue) && indexBeforeBackup) {
                writeIndex();
            } else if (fires(backupDue)) {
                backupDue.reset();
                backUp();
            } else if (fires(flushDue)) {
                flushDue.reset();
                flush();
            } else if (fires(indexDue))
                writeIndex();
            else if (now >= end)
                return;
        }
    }
    void quit() {
        if (flushDue)
            flush();
        writeIndex();
    }
    void loseDefaults() {
        videos.clear();
        timelines.clear();
        collections.clear();
        unsavedIndex.reset();
        indexCopy.reset();
        backupNoted = false;
    }
    void loseDocuments() {
        timelineFiles.clear();
        folders.clear();
        indexFile.reset();
        unfinishedRestore = false;
    }
};

}  // namespace tembrix
