#include "core/storage/in_memory_storage_manager.h"

#include <cerrno>
#include <mutex>
#include <system_error>

#include "base/files.h"
#include "base/result.h"

#include "core/records/codec.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"
#include "core/storage/saved_copies.h"
#include "core/storage/set_aside.h"
#include "core/storage/timeline_encoder.h"

namespace tembrix {

InMemoryStorageManager::InMemoryStorageManager(UserDefaults& defaults, Scheduler& scheduler,
                                               Directories directories, Log& log)
    : defaults_(defaults),
      scheduler_(scheduler),
      directories_(std::move(directories)),
      log_(log),
      documents_(directories_.documents / layout::dataFolder, defaults, log),
      encoder_(std::make_shared<TimelineEncoder>()),
      writing_(scheduler),
      preparing_(scheduler) {}

InMemoryStorageManager::~InMemoryStorageManager() {
    writing_.cancelAndWait();
}

void InMemoryStorageManager::setCollectionIndex(CollectionIndexStorage* index) {
    index_ = index;
    documents_.setCollectionIndex(index);
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
    const RepairScope repair;
    const std::string key = layout::timelineKey(videoId);
    const auto cached = defaults_.data(key);
    if (cached) {
        if (auto lines = decode<TimelineLines>(*cached);
            lines && !documents_.isDamagedTimeline(videoId, *cached))
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
        if (cached && savedCopies_)
            savedCopies_->noteDamage();
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
    const RepairScope repair;
    const std::string key = layout::collectionKey(id);
    if (isDeletedCollection(key))
        return std::nullopt;
    const auto cached = defaults_.data(key);
    if (cached) {
        if (auto collection = decode<CollectionData>(*cached);
            collection && !documents_.isDamagedCollection(id, *collection))
            return std::move(collection).value();
        setAside(defaults_, log_, key, *cached);
    }
    auto collection = readCollectionFolder(id);
    if (collection) {
        if (cached && savedCopies_)
            savedCopies_->noteDamage();
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
    if (savedCopies_) {
        files.replaceDamaged(CollectionFiles(savedCopies_->savedCollectionFolder(id)));
        savedCopies_->noteDamage();
    }
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
    const bool allWritten = documents_.writeAll();
    if (flushed_)
        flushed_(allWritten);
    if (!allWritten)
        writing_.onMain([this] { scheduleSaveToDisk(); });
}

void InMemoryStorageManager::forgetWritten() {
    documents_.forget();
    const std::lock_guard lock(workingCopies_);
    deletedCollections_.clear();
}

std::filesystem::path InMemoryStorageManager::screenshotsFolder(const std::string& videoId) const {
    return directories_.documents / layout::screenshotsFolder / pathFromText(videoId);
}

}  // namespace tembrix
