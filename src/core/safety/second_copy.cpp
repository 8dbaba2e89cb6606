#include "core/safety/second_copy.h"

#include <charconv>
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

}  // namespace

SecondCopy::SecondCopy(std::filesystem::path file, UserDefaults& defaults,
                       PropertyList& propertyLists, Log& log)
    : file_(std::move(file)), defaults_(defaults), propertyLists_(propertyLists), log_(log) {}

void SecondCopy::write() {
    const std::lock_guard lock(writing_);
    Values values;
    if (auto list = defaults_.data(layout::videosDataKey))
        values[layout::videosDataKey] = std::move(*list);
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

bool SecondCopy::repairDefaults() {
    const auto content = readFile(file_);
    if (!content)
        return false;
    const auto values = propertyLists_.decode(*content);
    const auto total = values ? values->find(checkKey) : Values::const_iterator();
    if (!values || total == values->end() || asText(total->second) != checkOfAll(*values)) {
        log_.line("⚠️ DataSync: The second copy is damaged and is not used");
        return false;
    }
    const auto date = values->find(layout::lastSyncDateKey);
    if (date != values->end() && !defaults_.date(layout::lastSyncDateKey)) {
        if (const auto known = dateOf(date->second)) {
            defaults_.setDate(layout::lastSyncDateKey, *known);
            log_.line("⚠️ DataSync: The date of the last backup was lost, its copy is used");
        }
    }
    const auto list = values->find(layout::videosDataKey);
    if (list == values->end())
        return false;
    const auto stored = defaults_.data(layout::videosDataKey);
    const auto check = defaults_.text(layout::videosCheckKey);
    if (stored && matchesCheck(check, *stored))
        return false;
    if (stored == list->second) {  // the check is damaged
        storeVideoList(defaults_, *stored);
        return false;
    }
    if (stored && !matchesCheck(check, list->second))
        return false;
    if (stored)
        setAside(defaults_, log_, layout::videosDataKey, *stored);
    storeVideoList(defaults_, list->second);
    log_.line("⚠️ DataSync: The list of videos was lost or damaged, its copy is used");
    return true;
}

}  // namespace tembrix
