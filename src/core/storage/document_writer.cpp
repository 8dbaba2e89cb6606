#include "core/storage/document_writer.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/content_hash.h"
#include "base/files.h"

#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/storage/collection_files.h"
#include "core/storage/collection_index_storage.h"
#include "core/storage/data_layout.h"
#include "core/storage/set_aside.h"

namespace tembrix {

namespace {

// If the database cannot be read now, values stored in this run must count as newer than its
// values.
const WrittenValues::Entries& entriesFor(UserDefaults& defaults, WrittenValues& written) {
    defaults.continueNumbers(written.storedIdentity(), written.lastNumber());
    written.useFor(defaults.identity());
    return written.entries();
}

// The rest of a key that starts with the prefix, if it can be the name of a document.
std::optional<std::string> idIn(std::string_view key, const char* prefix) {
    if (!key.starts_with(prefix))
        return std::nullopt;
    key.remove_prefix(std::strlen(prefix));
    return isFileName(key) ? std::optional(std::string(key)) : std::nullopt;
}

// A document that was removed is written again, unless all data was deleted.
bool isWritten(const std::optional<WrittenValues::Entry>& entry, std::uint64_t number,
               const std::filesystem::path& document) {
    std::error_code error;
    return entry && entry->number == number &&
           (entry->hash == 0 || std::filesystem::exists(document, error) || error);
}

std::uint64_t hashOf(const CollectionData& collection) {
    const auto record = encode(collection);
    return record ? contentHash(*record) : 0;
}

// The content of a timeline's document, or the record in a collection's files.
std::optional<Bytes> documentOf(const DocumentWriter& writer, const std::string& key) {
    if (const auto id = idIn(key, layout::timelinePrefix))
        return readFile(writer.timelineFile(*id)).optional();
    const auto id = idIn(key, layout::collectionPrefix);
    const CollectionFiles files(writer.collectionsFolder() / pathFromText(id.value_or("")));
    const auto collection = id && files.isWhole() ? files.collection(*id) : std::nullopt;
    return collection ? encode(*collection).optional() : std::nullopt;
}

}  // namespace

DocumentWriter::DocumentWriter(std::filesystem::path dataFolder, UserDefaults& defaults, Log& log)
    : dataFolder_(std::move(dataFolder)),
      defaults_(defaults),
      log_(log),
      written_(dataFolder_ / layout::writtenValuesFile),
      atStart_(entriesFor(defaults_, written_)) {
    dropOutdatedWorkingCopies();
}

void DocumentWriter::setCollectionIndex(CollectionIndexStorage* index) {
    const std::lock_guard lock(writing_);
    index_ = index;
}

std::filesystem::path DocumentWriter::timelinesFolder() const {
    return dataFolder_ / layout::timelinesFolder;
}

std::filesystem::path DocumentWriter::collectionsFolder() const {
    return dataFolder_ / layout::collectionsFolder;
}

std::filesystem::path DocumentWriter::timelineFile(const std::string& videoId) const {
    return timelinesFolder() / pathFromText(videoId + layout::recordExtension);
}

// A removed value needs no document. A document that was replaced by hand or by a restore says
// nothing about the value. Damage to the database can take the number of a value that is intact.
// Such a value may be the newer one: it gets a new number, and the document is set aside.
void DocumentWriter::dropOutdatedWorkingCopies() {
    const RepairScope repair;
    for (const auto& [key, entry] : atStart_) {
        const auto number = defaults_.changeNumber(key);
        if (!isOutdated(key, number))
            continue;
        const auto value = defaults_.data(key);
        if (value && number == 0) {
            log_.line("⚠️ Storage: Working copy " + key + " has lost its number and is used");
            const auto document = documentOf(*this, key);
            if (document && *document != *value)
                setAside(defaults_, log_, key, *document);
            defaults_.setData(key, *value);
            continue;
        }
        noteLostChanges();
        if (!value)
            continue;
        log_.line("⚠️ Storage: Working copy " + key + " is older than its document, dropped");
        setAside(defaults_, log_, key, *value);
        defaults_.remove(key);
    }
}

// Whether the document contains a later change than the working copy. That happens if the end of
// the database log was lost or an older database was put in place.
bool DocumentWriter::isOutdated(const std::string& key, std::uint64_t number) const {
    const auto entry = written_.find(key);
    return entry && entry->number > number && entry->hash != 0 && documentHash(key) == entry->hash;
}

// 0 if it cannot be read.
std::uint64_t DocumentWriter::documentHash(const std::string& key) const {
    const auto document = documentOf(*this, key);
    return document ? contentHash(*document) : 0;
}

std::optional<CollectionData> DocumentWriter::readCollection(const std::string& id) const {
    const CollectionFiles files(collectionsFolder() / pathFromText(id));
    return files.isWhole() ? files.collection(id) : std::nullopt;
}

// What the preceding run has written of a working copy that has not changed since.
const WrittenValues::Entry* DocumentWriter::entryIfUnchanged(const std::string& key) const {
    const auto found = atStart_.find(key);
    const bool isUnchanged = found != atStart_.end() && found->second.hash != 0 &&
                             found->second.number == defaults_.changeNumber(key);
    return isUnchanged ? &found->second : nullptr;
}

bool DocumentWriter::isDamagedTimeline(const std::string& id, BytesView workingCopy) const {
    const std::string key = layout::timelineKey(id);
    const auto* entry = isFileName(id) ? entryIfUnchanged(key) : nullptr;
    if (!entry || entry->hash == contentHash(workingCopy))
        return false;
    const auto document = readFile(timelineFile(id));
    if (document && contentHash(*document) == entry->hash) {
        log_.line("⚠️ Storage: Working copy " + key + " is damaged, its document is used");
        return true;
    }
    log_.line("⚠️ Storage: Working copy " + key + " differs from what was written");
    if (document && !std::ranges::equal(*document, workingCopy))
        setAside(defaults_, log_, key, *document);
    return false;
}

// The files of time events and field remain when a collection has none any more. They contain no
// id, because it is the name of the folder.
bool DocumentWriter::isDamagedCollection(const std::string& id,
                                         const CollectionData& workingCopy) const {
    const std::string key = layout::collectionKey(id);
    const auto* entry = isFileName(id) ? entryIfUnchanged(key) : nullptr;
    auto document = entry ? readCollection(id) : std::nullopt;
    if (!document || hashOf(*document) != entry->hash)
        return false;
    if (workingCopy.timeEvents.empty())
        document->timeEvents.clear();
    if (!workingCopy.playField)
        document->playField.reset();
    document->id = workingCopy.id;
    if (*document == workingCopy)
        return false;
    log_.line("⚠️ Storage: Working copy " + key + " is damaged, its files are used");
    return true;
}

void DocumentWriter::forget() {
    written_.clear();
    (void)written_.save();  // if the folder does not exist, nothing was written
}

void DocumentWriter::keepFromDocuments() {
    for (const char* prefix : {layout::timelinePrefix, layout::collectionPrefix})
        for (const auto& key : defaults_.keys(prefix))
            written_.set(key, {defaults_.changeNumber(key), 0});
    saveWritten();
}

// The database is synced before the documents are written, so that after a power failure no
// document is newer than its value.
bool DocumentWriter::writeAll() {
    const std::lock_guard lock(writing_);
    allWritten_ = true;
    defaults_.makeDurable();
    written_.useFor(defaults_.identity());
    writeTimelines();
    writeCollections();
    saveWritten();
    return allWritten_;
}

void DocumentWriter::saveWritten() {
    const auto folder = makeFolder(dataFolder_);
    if (const auto saved = folder ? written_.save() : folder; !saved)
        notWritten("❌ Storage: Error writing the list of written values - ", saved.error());
}

void DocumentWriter::notWritten(const std::string& what, const Error& error) {
    log_.line(what + error.text);
    allWritten_ = false;
}

void DocumentWriter::writeTimelines() {
    if (const auto made = makeFolder(timelinesFolder()); !made) {
        notWritten("❌ Storage: Error making the timelines folder - ", made.error());
        return;
    }
    for (const auto& key : defaults_.keys(layout::timelinePrefix))
        writeTimeline(key);
}

void DocumentWriter::writeTimeline(const std::string& key) {
    const auto id = idIn(key, layout::timelinePrefix);
    if (!id)
        return;
    const auto file = timelineFile(*id);
    // The number is read before the value, so that a concurrent change is written again rather than
    // missed.
    const auto number = defaults_.changeNumber(key);
    if (isWritten(written_.find(key), number, file) || isOutdated(key, number))
        return;
    const auto value = defaults_.data(key);
    if (!value)
        return;
    if (!fileContains(file, *value)) {
        // A damaged working copy must not replace a good file, from which it can be repaired.
        if (const auto lines = decode<TimelineLines>(*value); !lines) {
            log_.line("❌ Storage: Unreadable timeline " + *id + " not written - " +
                      lines.error().text);
            return;
        }
        if (const auto written = replaceFile(file, *value); !written) {
            notWritten("❌ Storage: Error writing timeline " + *id + " - ", written.error());
            return;
        }
        // If the video was deleted meanwhile, its file was removed before this one was written.
        const auto still = defaults_.keys(key);
        std::error_code ignored;
        if (still.empty() || still.front() != key)
            std::filesystem::remove(file, ignored);
    }
    // A value without a number is a repair that may be dropped when the database can be read again.
    if (number > 0)
        written_.set(key, {number, contentHash(*value)});
}

void DocumentWriter::writeCollections() {
    const auto keys = defaults_.keys(layout::collectionPrefix);
    removeDeletedCollections(keys);
    for (const auto& key : keys)
        writeCollection(key);
}

void DocumentWriter::writeCollection(const std::string& key) {
    const auto id = idIn(key, layout::collectionPrefix);
    if (!id)
        return;
    const auto folder = collectionsFolder() / pathFromText(*id);
    const auto number = defaults_.changeNumber(key);
    if (isWritten(written_.find(key), number, folder) || isOutdated(key, number))
        return;
    const auto value = defaults_.data(key);
    const auto collection = value ? decode<CollectionData>(*value).optional() : std::nullopt;
    if (!collection)
        return;
    if (const auto done = writeCollectionFiles(folder, *collection); !done) {
        notWritten("❌ Storage: Error writing collection " + *id + " - ", done.error());
        return;
    }
    if (const auto hash = documentHash(key); hash != 0 && number > 0)
        written_.set(key, {number, hash});
}

// An empty list is used only if the index file itself is empty. A lost or damaged index is also
// read as an empty list, and all collections would be removed.
std::optional<std::vector<CollectionInfo>> DocumentWriter::indexedCollections() {
    if (!index_)
        return std::nullopt;
    auto listed = index_->collections();
    if (!listed.empty())
        return listed;
    const auto file = readFile(dataFolder_ / layout::collectionIndexFile);
    return file ? decode<std::vector<CollectionInfo>>(*file).optional() : std::nullopt;
}

void DocumentWriter::removeDeletedCollections(const std::vector<std::string>& keys) {
    const auto listed = indexedCollections();
    if (!listed || lostChanges_)
        return;
    std::set<std::string> kept;
    for (const auto& key : keys)
        if (const auto id = idIn(key, layout::collectionPrefix))
            kept.insert(*id);
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

}  // namespace tembrix
