#include "core/storage/in_memory_storage_manager.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <set>
#include <system_error>

#include "base/content_hash.h"
#include "base/files.h"
#include "base/json_style.h"
#include "base/result.h"

#include "core/records/codec.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"
#include "core/storage/saved_copies.h"
#include "core/storage/set_aside.h"
#include "core/storage/timeline_encoder.h"

namespace tembrix {

namespace {

template <class Record>
std::optional<Record> readRecord(const std::filesystem::path& file) {
    const auto content = readFile(file);
    if (!content)
        return std::nullopt;
    return decode<Record>(*content).optional();
}

bool fileHolds(const std::filesystem::path& file, BytesView content) {
    std::error_code error;
    if (std::filesystem::file_size(file, error) != content.size() || error)
        return false;
    const auto present = readFile(file);
    return present && std::equal(present->begin(), present->end(), content.begin(), content.end());
}

}  // namespace

InMemoryStorageManager::InMemoryStorageManager(UserDefaults& defaults, Scheduler& scheduler,
                                               Directories directories, Log& log)
    : defaults_(defaults),
      scheduler_(scheduler),
      directories_(std::move(directories)),
      log_(log),
      written_(dataFolder() / layout::writtenValuesFile),
      encoder_(std::make_shared<TimelineEncoder>()),
      writing_(scheduler),
      preparing_(scheduler) {
    // If the database cannot be read now, values stored in this run must count as newer than its
    // values.
    defaults_.continueNumbers(written_.storedIdentity(), written_.lastNumber());
    written_.useFor(defaults_.identity());
    dropOutdatedWorkingCopies();
}

InMemoryStorageManager::~InMemoryStorageManager() {
    writing_.cancelAndWait();
}

void InMemoryStorageManager::setCollectionIndex(CollectionIndexStorage* index) {
    const std::lock_guard lock(flush_);
    index_ = index;
}

void InMemoryStorageManager::setSavedCopies(SavedCopies* copies) {
    savedCopies_ = copies;
}

void InMemoryStorageManager::saveTimeline(const TimelineLines& lines, const std::string& videoId,
                                          const EditedLines& edits) {
    preparing_.cancel();
    if (const auto encoded = encoder_->encode(lines, edits); !encoded) {
        log_.line("❌ Storage: Error encoding timeline " + videoId + " - " + encoded.error().text);
        return;
    }
    {
        const std::lock_guard lock(workingCopies_);
        unreadable_.erase(videoId);
        defaults_.setPieces(layout::timelineKey(videoId), encoder_->pieces());
    }
    // Released in the background. No other thread uses these lines any more.
    if (auto released = encoder_->takeReleased(); !released.empty())
        preparing_.release(std::move(released));
    scheduleSaveToDisk();
}

void InMemoryStorageManager::prepareToSave(TimelineLines lines) {
    // The lines are released on the main thread only, because their owner checks there whether they
    // are shared.
    const auto opened = std::make_shared<TimelineLines>(std::move(lines));
    preparing_.cancel();
    preparing_.run(
        Priority::userInitiated,
        [opened] {
            auto encoder = std::make_shared<TimelineEncoder>();
            (void)encoder->encode(*opened);
            return encoder;
        },
        [this, opened](std::shared_ptr<TimelineEncoder> encoder) {
            encoder_ = std::move(encoder);
        });
}

TimelineLines InMemoryStorageManager::loadTimeline(const std::string& videoId) {
    const std::string key = layout::timelineKey(videoId);
    const auto cached = defaults_.data(key);
    if (cached) {
        if (auto lines = decode<TimelineLines>(*cached))
            return std::move(lines).value();
        setAside(defaults_, log_, key, *cached);
    }
    if (!isFileName(videoId))
        return {};
    const auto stored = readFile(timelineFile(videoId));
    if (!stored && !cached && stored.error().code == ENOENT)
        return {};
    auto lines = stored ? decode<TimelineLines>(*stored) : Result<TimelineLines>(stored.error());
    if (lines) {
        if (!fillWorkingCopy(key, cached, *stored))
            return loadTimeline(videoId);
        return std::move(lines).value();
    }
    log_.line("❌ Storage: Error reading timeline file " + videoId + " - " + lines.error().text);
    if (stored)
        setAside(defaults_, log_, key, *stored);
    return loadSavedTimeline(videoId, cached);
}

// Loads a timeline from the backup if no other copy can be read.
TimelineLines InMemoryStorageManager::loadSavedTimeline(const std::string& videoId,
                                                        const std::optional<Bytes>& cached) {
    auto saved = savedCopies_ ? savedCopies_->savedTimeline(videoId) : std::nullopt;
    const auto document = saved ? encode(*saved).optional() : std::nullopt;
    if (document) {
        if (!fillWorkingCopy(layout::timelineKey(videoId), cached, *document))
            return loadTimeline(videoId);
        log_.line("⚠️ Storage: Timeline " + videoId + " taken from the backup");
        return std::move(*saved);
    }
    defaults_.setBoolean(layout::unreadableKey(videoId), true);
    const std::lock_guard lock(workingCopies_);
    unreadable_.insert(videoId);
    return {};
}

bool InMemoryStorageManager::isTimelineUnreadable(const std::string& videoId) const {
    const std::lock_guard lock(workingCopies_);
    return unreadable_.contains(videoId);
}

// The backup and the tag library load in the background. Data that they read from the disk must not
// replace a value that was saved meanwhile.
bool InMemoryStorageManager::fillWorkingCopy(const std::string& key,
                                             const std::optional<Bytes>& before, BytesView value) {
    const std::lock_guard lock(workingCopies_);
    if (deletedCollections_.contains(key) || defaults_.data(key) != before)
        return false;
    defaults_.setData(key, value);
    return true;
}

void InMemoryStorageManager::deleteTimelineFile(const std::string& videoId) {
    std::error_code ignored;
    if (isFileName(videoId))
        std::filesystem::remove(timelineFile(videoId), ignored);
}

void InMemoryStorageManager::saveCollection(const CollectionData& collection) {
    const auto encoded = encode(collection);
    if (!encoded) {
        log_.line("❌ Storage: Error encoding collection " + collection.id + " - " +
                  encoded.error().text);
        return;
    }
    {
        const std::lock_guard lock(workingCopies_);
        deletedCollections_.erase(layout::collectionKey(collection.id));
        defaults_.setData(layout::collectionKey(collection.id), *encoded);
    }
    scheduleSaveToDisk();
}

std::optional<CollectionData> InMemoryStorageManager::loadCollection(const std::string& id) {
    const std::string key = layout::collectionKey(id);
    if (isDeletedCollection(key))
        return std::nullopt;
    const auto cached = defaults_.data(key);
    if (cached) {
        if (auto collection = decode<CollectionData>(*cached))
            return std::move(collection).value();
        setAside(defaults_, log_, key, *cached);
    }
    auto collection = readCollectionFolder(id);
    if (collection) {
        if (const auto encoded = encode(*collection);
            encoded && !fillWorkingCopy(key, cached, *encoded))
            return loadCollection(id);
    }
    return collection;
}

// Ids are used as names of files and folders, so an id that is not a valid file name is rejected.
std::optional<CollectionData> InMemoryStorageManager::readCollectionFolder(const std::string& id) {
    if (!isFileName(id))
        return std::nullopt;
    CollectionFiles files(collectionsFolder() / pathFromText(id));
    if (files.damaged().empty())
        return files.collection(id);
    for (const auto& name : files.damaged())
        log_.line("❌ Storage: Unreadable file of collection " + id + ": " + name);
    for (const auto& content : files.damagedContents())
        setAside(defaults_, log_, layout::collectionKey(id), content);
    if (savedCopies_)
        files.replaceDamaged(CollectionFiles(savedCopies_->savedCollectionFolder(id)));
    return files.collection(id);
}

void InMemoryStorageManager::deleteCollection(const std::string& id) {
    {
        const std::lock_guard lock(workingCopies_);
        deletedCollections_.insert(layout::collectionKey(id));
        defaults_.remove(layout::collectionKey(id));
    }
    scheduleSaveToDisk();
}

bool InMemoryStorageManager::isDeletedCollection(const std::string& key) const {
    const std::lock_guard lock(workingCopies_);
    return deletedCollections_.contains(key);
}

void InMemoryStorageManager::scheduleSaveToDisk() {
    if (pendingSave_)
        return;  // the running timer covers this change as well
    pendingSave_ = true;
    // The timer is a member, so it cannot fire after the manager was destroyed.
    saveToDiskTimer_ = scheduler_.after(saveToDiskInterval, [this] { flush(); });
}

void InMemoryStorageManager::applicationWillTerminate() {
    saveToDiskTimer_.reset();
    flush();
    if (index_)
        index_->saveNow();
}

void InMemoryStorageManager::flush() {
    if (!pendingSave_)
        return;
    pendingSave_ = false;
    writing_.run(Priority::utility, [this] { flushNow(); });
}

void InMemoryStorageManager::flushNow() {
    const std::lock_guard lock(flush_);
    writeAll();
}

std::unique_lock<std::mutex> InMemoryStorageManager::holdFlush() {
    return std::unique_lock(flush_);
}

void InMemoryStorageManager::forgetWritten() {
    written_.clear();
    (void)written_.save();  // if the folder does not exist, nothing was written
    const std::lock_guard lock(workingCopies_);
    deletedCollections_.clear();
}

void InMemoryStorageManager::keepFromDocuments() {
    for (const char* prefix : {layout::timelinePrefix, layout::collectionPrefix})
        for (const auto& key : defaults_.keys(prefix))
            written_.set(key, {defaults_.changeNumber(key), 0});
    saveWritten();
}

void InMemoryStorageManager::saveWritten() {
    const auto folder = makeFolder(dataFolder());
    if (const auto saved = folder ? written_.save() : folder; !saved)
        log_.line("❌ Storage: Error writing the list of written values - " + saved.error().text);
}

// Returns true if a document contains a later change than the working copy. That happens if the end
// of the database log was lost or an older database was put in place. A document that was replaced
// by hand or by a restore differs from the one that was written and is ignored.
bool InMemoryStorageManager::isOutdated(const std::string& key, std::uint64_t number) const {
    const auto entry = written_.find(key);
    if (!entry || entry->number <= number)
        return false;
    const std::string id = key.substr(std::strlen(layout::timelinePrefix));
    const auto document = isFileName(id) ? readFile(timelineFile(id)) : Result<Bytes>(Error{});
    return document && contentHash(*document) == entry->hash;
}

void InMemoryStorageManager::dropOutdatedWorkingCopies() {
    for (const auto& key : defaults_.keys(layout::timelinePrefix)) {
        if (!isOutdated(key, defaults_.changeNumber(key)))
            continue;
        log_.line("⚠️ Storage: Working copy " + key + " is older than its document, dropped");
        if (const auto value = defaults_.data(key))
            setAside(defaults_, log_, key, *value);
        defaults_.remove(key);
    }
}

// The database is synced before the documents are written, so that after a power failure no
// document is newer than its value.
void InMemoryStorageManager::writeAll() {
    defaults_.makeDurable();
    written_.useFor(defaults_.identity());
    saveTimelinesToDisk();
    saveCollectionsToDisk();
    saveWritten();
}

void InMemoryStorageManager::saveTimelinesToDisk() {
    if (const auto made = makeFolder(timelinesFolder()); !made) {
        log_.line("❌ Storage: Error making the timelines folder - " + made.error().text);
        return;
    }
    for (const auto& key : defaults_.keys(layout::timelinePrefix))
        saveTimelineToDisk(key);
}

void InMemoryStorageManager::saveTimelineToDisk(const std::string& key) {
    const std::string id = key.substr(std::strlen(layout::timelinePrefix));
    // The number is read before the value, so that a concurrent change is written again rather than
    // missed.
    const auto number = defaults_.changeNumber(key);
    const auto entry = written_.find(key);
    if ((entry && number > 0 && entry->number == number) || isOutdated(key, number))
        return;
    const auto value = defaults_.data(key);
    if (!value || !isFileName(id))
        return;
    if (!fileHolds(timelineFile(id), *value)) {
        // A damaged working copy must not replace a good file, from which it can be repaired.
        if (const auto lines = decode<TimelineLines>(*value); !lines) {
            log_.line("❌ Storage: Unreadable timeline " + id + " not written - " +
                      lines.error().text);
            return;
        }
        if (const auto written = replaceFile(timelineFile(id), *value); !written) {
            log_.line("❌ Storage: Error writing timeline " + id + " - " + written.error().text);
            return;
        }
        // If the video was deleted meanwhile, its file was removed before this one was written.
        const auto still = defaults_.keys(key);
        if (still.empty() || still.front() != key)
            deleteTimelineFile(id);
    }
    written_.set(key, {number, contentHash(*value)});
}

void InMemoryStorageManager::saveCollectionsToDisk() {
    std::vector<std::string> ids;
    for (const auto& key : defaults_.keys(layout::collectionPrefix))
        ids.push_back(key.substr(std::strlen(layout::collectionPrefix)));
    removeDeletedCollections(ids);
    for (const auto& id : ids) {
        const std::string key = layout::collectionKey(id);
        const auto number = defaults_.changeNumber(key);
        const auto entry = written_.find(key);
        if (entry && number > 0 && entry->number == number)
            continue;
        const auto value = defaults_.data(key);
        if (!value || !isFileName(id))
            continue;
        auto collection = decode<CollectionData>(*value).optional();
        if (!collection)
            continue;
        collection->id = id;  // the key determines the name of the folder
        if (writeCollection(*collection))
            written_.set(key, {number, 0});
    }
}

// An empty list is used only if the index file itself is empty. A lost or damaged index is also
// read as an empty list, and all collections would be removed.
std::optional<std::vector<CollectionInfo>> InMemoryStorageManager::indexedCollections() {
    if (!index_)
        return std::nullopt;
    auto listed = index_->collections();
    if (!listed.empty())
        return listed;
    return readRecord<std::vector<CollectionInfo>>(dataFolder() / layout::collectionIndexFile);
}

void InMemoryStorageManager::removeDeletedCollections(const std::vector<std::string>& cachedIds) {
    const auto listed = indexedCollections();
    if (!listed)
        return;
    std::set<std::string> kept(cachedIds.begin(), cachedIds.end());
    for (const auto& collection : *listed)
        kept.insert(collection.id);
    std::error_code error;
    std::vector<std::filesystem::path> removed;
    for (std::filesystem::directory_iterator entry(collectionsFolder(), error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code unreadable;
        if (entry->is_directory(unreadable) && !kept.contains(pathText(entry->path().filename())))
            removed.push_back(entry->path());
    }
    if (error)
        return;
    for (const auto& folder : removed) {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
}

template <class Record>
bool InMemoryStorageManager::writeCollectionFile(const std::filesystem::path& file,
                                                 const Record& record) {
    const auto encoded = encode(record, JsonStyle::pretty);
    if (!encoded || fileHolds(file, *encoded))
        return true;
    const auto written = replaceFile(file, *encoded);
    if (!written)
        log_.line("❌ Storage: Error writing collection file - " + written.error().text);
    return written.ok();
}

bool InMemoryStorageManager::writeCollection(const CollectionData& collection) {
    const auto folder = collectionsFolder() / pathFromText(collection.id);
    if (const auto made = makeFolder(folder); !made) {
        log_.line("❌ Storage: Error making the collection folder - " + made.error().text);
        return false;
    }
    bool done =
        writeCollectionFile(folder / layout::tagGroupsFile, TagGroupsData{collection.tagGroups});
    done = writeCollectionFile(folder / layout::tagsFile, TagsData{collection.tags}) && done;
    done = writeCollectionFile(folder / layout::labelGroupsFile,
                               LabelGroupsData{collection.labelGroups}) &&
           done;
    done = writeCollectionFile(folder / layout::labelsFile, LabelsData{collection.labels}) && done;
    // The files of time events and field remain if the collection no longer has any. When reading,
    // the working copy has priority.
    if (!collection.timeEvents.empty())
        done = writeCollectionFile(folder / layout::timeEventsFile,
                                   TimeEventsData{collection.timeEvents}) &&
               done;
    if (collection.playField)
        done = writeCollectionFile(folder / layout::playFieldFile, *collection.playField) && done;
    return done;
}

std::filesystem::path InMemoryStorageManager::dataFolder() const {
    return directories_.documents / layout::dataFolder;
}

std::filesystem::path InMemoryStorageManager::timelinesFolder() const {
    return dataFolder() / layout::timelinesFolder;
}

std::filesystem::path InMemoryStorageManager::collectionsFolder() const {
    return dataFolder() / layout::collectionsFolder;
}

std::filesystem::path InMemoryStorageManager::timelineFile(const std::string& videoId) const {
    return timelinesFolder() / pathFromText(videoId + layout::recordExtension);
}

std::filesystem::path InMemoryStorageManager::screenshotsFolder(const std::string& videoId) const {
    return directories_.documents / layout::screenshotsFolder / pathFromText(videoId);
}

}  // namespace tembrix
