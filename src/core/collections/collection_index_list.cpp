#include "core/collections/collection_index_list.h"

#include <algorithm>
#include <cstddef>
#include <system_error>
#include <utility>

#include "base/bytes.h"
#include "base/files.h"
#include "base/json_style.h"

#include "ports/user_defaults.h"

#include "core/records/codec.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

using List = std::vector<CollectionInfo>;

// A damaged byte can leave a document readable, but with another id or name in it.
bool differInOneByte(const Bytes& one, const Bytes& other) {
    if (one.size() != other.size())
        return false;
    std::size_t different = 0;
    for (std::size_t i = 0; i < one.size() && different < 2; ++i)
        different += one[i] != other[i] ? 1U : 0U;
    return different == 1;
}

std::optional<List> storedList(const UserDefaults& defaults, const char* key) {
    const auto value = defaults.data(key);
    return value ? decode<List>(*value).optional() : std::nullopt;
}

}  // namespace

CollectionIndexList::CollectionIndexList(std::filesystem::path file, UserDefaults& defaults,
                                         Log& log)
    : file_(std::move(file)), defaults_(defaults), log_(log) {
    if (auto unsaved = storedList(defaults_, layout::collectionsUnsavedKey)) {
        cache_ = std::move(*unsaved);
        ahead_ = true;
    }
}

std::optional<List> CollectionIndexList::secondCopy() const {
    return storedList(defaults_, layout::collectionsSecondCopyKey);
}

List CollectionIndexList::list() {
    for (;;) {
        std::uint64_t before = 0;
        {
            const std::lock_guard lock(cacheLock_);
            if (isLoaded())
                return cache_;
            before = generation_;
        }
        auto read = this->read();
        const std::lock_guard lock(cacheLock_);
        if (generation_ != before)
            continue;
        cache_ = std::move(read);
        return cache_;
    }
}

List CollectionIndexList::read() const {
    std::error_code ignored;
    if (!std::filesystem::exists(file_, ignored))
        return {};
    const auto bytes = readFile(file_);
    auto list = bytes ? decode<List>(*bytes) : Result<List>(bytes.error());
    const auto copy = secondCopy();
    if (!list) {
        log_.line("❌ CollectionsBookmarks: Error loading collections - " + list.error().text);
        return copy.value_or(List{});
    }
    const auto expected = copy ? encode(*copy, JsonStyle::pretty).optional() : std::nullopt;
    if (expected && differInOneByte(*bytes, *expected)) {
        log_.line("⚠️ CollectionsBookmarks: The index is damaged, its second copy is used");
        return *copy;
    }
    return std::move(list).value();
}

void CollectionIndexList::loadIfEmpty() {
    if (!isLoaded())
        cache_ = read();
}

void CollectionIndexList::setAhead() {
    ahead_ = true;
    ++generation_;
    if (const auto json = encode(cache_))
        defaults_.setData(layout::collectionsUnsavedKey, *json);
}

void CollectionIndexList::setWritten(const List& list) {
    if (const auto json = encode(list))
        defaults_.setData(layout::collectionsSecondCopyKey, *json);
    ahead_ = false;
    defaults_.remove(layout::collectionsUnsavedKey);
}

bool CollectionIndexList::change(const std::function<bool(List&)>& change) {
    const std::lock_guard lock(cacheLock_);
    loadIfEmpty();
    if (!change(cache_))
        return false;
    setAhead();
    return true;
}

void CollectionIndexList::markUnsaved() {
    const std::lock_guard lock(cacheLock_);
    loadIfEmpty();
    setAhead();
}

bool CollectionIndexList::writeFile(const List& list) const {
    const auto json = encode(list, JsonStyle::pretty);
    const auto written = json ? tembrix::replaceFile(file_, *json) : Result<void>(json.error());
    if (!written)
        log_.line("❌ CollectionsBookmarks: Error saving collections - " + written.error().text);
    return written.ok();
}

void CollectionIndexList::write() {
    const std::lock_guard writing(writing_);
    List list;
    std::uint64_t before = 0;
    {
        const std::lock_guard lock(cacheLock_);
        if (!ahead_)  // it was written meanwhile, or the file was replaced
            return;
        list = cache_;
        before = generation_;
    }
    if (!writeFile(list))
        return;
    {
        const std::lock_guard lock(cacheLock_);
        if (generation_ != before)
            return;
        setWritten(list);
    }
    notifyWritten();
}

void CollectionIndexList::changeAndWrite(const std::function<void(List&)>& change) {
    const std::lock_guard writing(writing_);
    {
        const std::lock_guard lock(cacheLock_);
        loadIfEmpty();
        change(cache_);
        setAhead();
        if (!writeFile(cache_))
            return;
        setWritten(cache_);
    }
    notifyWritten();
}

void CollectionIndexList::notifyWritten() const {
    if (notice_)
        notice_();
}

void CollectionIndexList::setWrittenNotice(std::function<void()> notice) {
    const std::lock_guard writing(writing_);
    notice_ = std::move(notice);
}

void CollectionIndexList::dropUnsavedChange() {
    const std::lock_guard writing(writing_);
    const std::lock_guard lock(cacheLock_);
    ++generation_;
    cache_.clear();
    ahead_ = false;
    defaults_.remove(layout::collectionsUnsavedKey);
}

Result<void> CollectionIndexList::replaceFile(const std::function<Result<void>()>& replace) {
    const std::lock_guard writing(writing_);
    const std::lock_guard lock(cacheLock_);
    const auto replaced = replace();
    if (!replaced)
        return replaced;
    ++generation_;
    cache_.clear();
    ahead_ = false;
    defaults_.remove(layout::collectionsUnsavedKey);
    // From now on the second copy is compared with the new file.
    const auto bytes = readFile(file_);
    const auto list = bytes ? decode<List>(*bytes).optional() : std::nullopt;
    if (const auto json = list ? encode(*list).optional() : std::nullopt)
        defaults_.setData(layout::collectionsSecondCopyKey, *json);
    else
        defaults_.remove(layout::collectionsSecondCopyKey);
    return {};
}

}  // namespace tembrix
