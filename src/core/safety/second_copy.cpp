#include "core/safety/second_copy.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "base/bytes.h"
#include "base/date.h"
#include "base/files.h"
#include "base/result.h"

#include "core/storage/data_layout.h"
#include "core/storage/set_aside.h"
#include "core/storage/video_list_store.h"

namespace tembrix {

namespace {

using Values = std::map<std::string, Bytes>;

constexpr const char* checkKey = "check";
constexpr const char* identityKey = "identity";  // of the store to which the numbers belong
constexpr const char* numberSuffix = ".number";

// The values that are copied as bytes. The date is copied as text.
constexpr const char* dataKeys[] = {layout::videosDataKey, layout::collectionsSecondCopyKey};
constexpr const char* allKeys[] = {layout::videosDataKey, layout::collectionsSecondCopyKey,
                                   layout::lastSyncDateKey};

// A checksum of all values, so that a damaged file is recognized.
std::string checkOfAll(const Values& values) {
    Bytes all;
    for (const auto& [key, value] : values)
        if (key != checkKey) {
            const Bytes name = toBytes(key);
            all.insert(all.end(), name.begin(), name.end());
            all.insert(all.end(), value.begin(), value.end());
        }
    return checkOf(all);
}

// The exact number of seconds as text.
Bytes dateBytes(Date date) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, date.secondsSince1970).ptr;
    return toBytes(std::string_view(text, static_cast<std::size_t>(end - text)));
}

std::optional<Date> dateOf(const Bytes& bytes) {
    const auto text = asText(bytes);
    Date date;
    const auto read =
        std::from_chars(text.data(), text.data() + text.size(), date.secondsSince1970);
    return read.ec == std::errc() ? std::optional(date) : std::nullopt;
}

const Bytes* find(const Values& values, const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? nullptr : &found->second;
}

bool isStored(const UserDefaults& defaults, const std::string& key) {
    return defaults.data(key) || defaults.date(key);
}

// The number of the copied change; 0 if it is unknown or belongs to another store.
std::uint64_t numberOf(const Values& values, const UserDefaults& defaults, const char* key) {
    const Bytes* identity = find(values, identityKey);
    const Bytes* bytes = find(values, std::string(key) + numberSuffix);
    if (!identity || !bytes || asText(*identity) != defaults.identity())
        return 0;
    std::uint64_t number = 0;
    const auto text = asText(*bytes);
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

SecondCopy::SecondCopy(std::filesystem::path file, UserDefaults& defaults,
                       PropertyList& propertyLists, Log& log)
    : file_(std::move(file)), defaults_(defaults), propertyLists_(propertyLists), log_(log) {}

void SecondCopy::write() {
    const std::lock_guard lock(writing_);
    // Values in memory have numbers that their store may not know at the next start.
    if (!defaults_.status().allStored)
        return;
    Values values;
    values[identityKey] = toBytes(defaults_.identity());
    // The numbers are read before the values, so that a concurrent change has a higher one.
    for (const char* key : allKeys)
        values[std::string(key) + numberSuffix] =
            toBytes(std::to_string(defaults_.changeNumber(key)));
    for (const char* key : dataKeys)
        if (auto value = defaults_.data(key))
            values[key] = std::move(*value);
    if (const auto date = defaults_.date(layout::lastSyncDateKey))
        values[layout::lastSyncDateKey] = dateBytes(*date);
    values[checkKey] = toBytes(checkOfAll(values));
    const auto content = propertyLists_.encode(values);
    auto written = content ? makeFolder(file_.parent_path()) : Result<void>(content.error());
    if (written)
        written = replaceFile(file_, *content);
    if (!written)
        log_.line("❌ DataSync: Error writing the second copy - " + written.error().text);
}

std::optional<Values> SecondCopy::read() const {
    const auto content = readFile(file_);
    if (!content)
        return std::nullopt;
    auto values = propertyLists_.decode(*content);
    const Bytes* check = values ? find(*values, checkKey) : nullptr;
    if (!check || asText(*check) != checkOfAll(*values)) {
        log_.line("⚠️ DataSync: The second copy is damaged and is not used");
        return std::nullopt;
    }
    return std::move(values).optional();
}

SecondCopy::Repair SecondCopy::repairDefaults() {
    const auto values = read();
    if (!values)
        return {};
    Repair repair;
    // Whether the value in the file is newer than that of the defaults, or at least not older: a
    // value that was removed later is not lost. One that is there without a number lost that
    // through damage to the database and cannot be compared.
    std::map<std::string, bool> isNewer, mayBeLost;
    std::uint64_t last = 0;
    for (const char* key : allKeys) {
        const auto number = numberOf(*values, defaults_, key);
        const auto present = defaults_.changeNumber(key);
        isNewer[key] =
            find(*values, key) && number > present && (present > 0 || !isStored(defaults_, key));
        mayBeLost[key] = number >= present;
        repair.lostChanges = repair.lostChanges || isNewer[key];
        last = std::max(last, number);
    }
    if (last > 0)
        defaults_.continueNumbers(defaults_.identity(), last);
    if (const Bytes* date = find(*values, layout::lastSyncDateKey);
        date && (isNewer[layout::lastSyncDateKey] || (!defaults_.date(layout::lastSyncDateKey) &&
                                                      mayBeLost[layout::lastSyncDateKey]))) {
        if (const auto known = dateOf(*date)) {
            defaults_.setDate(layout::lastSyncDateKey, *known);
            log_.line("⚠️ DataSync: The date of the last backup was lost, its copy is used");
        }
    }
    if (const Bytes* list = find(*values, layout::videosDataKey);
        list && (defaults_.data(layout::videosDataKey) || mayBeLost[layout::videosDataKey])) {
        repair.listWasLost = !defaults_.data(layout::videosDataKey);
        repair.listReplaced = repairVideoList(*list, isNewer[layout::videosDataKey]);
    }
    const auto written = std::max(numberOf(*values, defaults_, layout::collectionsSecondCopyKey),
                                  defaults_.changeNumber(layout::collectionsSecondCopyKey));
    const auto unsaved = defaults_.changeNumber(layout::collectionsUnsavedKey);
    repair.indexIsOlder =
        defaults_.data(layout::collectionsUnsavedKey) && unsaved > 0 && unsaved < written;
    if (isNewer[layout::collectionsSecondCopyKey])
        defaults_.setData(layout::collectionsSecondCopyKey,
                          *find(*values, layout::collectionsSecondCopyKey));
    return repair;
}

// Returns whether the stored list was replaced because it was damaged or lost. An older one is also
// replaced.
bool SecondCopy::repairVideoList(const Bytes& list, bool isNewer) {
    const auto stored = defaults_.data(layout::videosDataKey);
    const auto check = defaults_.text(layout::videosCheckKey);
    if (!isNewer && stored && matchesCheck(check, *stored))
        return false;
    if (stored == list) {  // the check is damaged, or the number was lost
        storeVideoList(defaults_, list);
        return false;
    }
    if (!isNewer && stored && !matchesCheck(check, list))
        return false;
    if (stored)
        setAside(defaults_, log_, layout::videosDataKey, *stored);
    storeVideoList(defaults_, list);
    log_.line("⚠️ DataSync: The list of videos was lost or damaged, its copy is used");
    return !isNewer;
}

}  // namespace tembrix
