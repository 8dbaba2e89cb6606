#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/content_hash.h"
#include "base/date.h"

namespace tembrix {

// A part of a large value. Pieces are immutable and shared, so that a value of which one piece
// changed is handed over without copying the others. Equal bytes have equal hashes.
struct ValuePiece {
    explicit ValuePiece(Bytes content) : bytes(std::move(content)), hash(contentHash(bytes)) {}

    const Bytes bytes;
    const std::uint64_t hash;
};
using ValuePieces = std::vector<std::shared_ptr<const ValuePiece>>;

inline Bytes joined(const ValuePieces& pieces) {
    std::size_t size = 0;
    for (const auto& piece : pieces)
        size += piece->bytes.size();
    Bytes whole;
    whole.reserve(size);
    for (const auto& piece : pieces)
        whole.insert(whole.end(), piece->bytes.begin(), piece->bytes.end());
    return whole;
}

enum class StorageFault { other, diskFull, readOnly, unreachable };

// Whether all values are on the disk, and if not, why.
struct DefaultsStatus {
    bool allStored = true;
    std::string reason;  // in English, for the log
    StorageFault fault = StorageFault::other;
    bool operator==(const DefaultsStatus&) const = default;
};

// Values by key that survive the process. A stored value is safe from a killed process as soon as
// the call returns. A value read as another kind than it was stored as is absent. A value that
// cannot be stored is kept in memory, is read from there, and is stored as soon as that is
// possible; `status` says so meanwhile. Safe for concurrent use from any thread.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    virtual std::optional<Bytes> data(std::string_view key) const = 0;
    virtual std::optional<std::string> text(std::string_view key) const = 0;
    virtual std::optional<Date> date(std::string_view key) const = 0;
    virtual bool boolean(std::string_view key) const = 0;  // false when absent

    virtual void setData(std::string_view key, BytesView value) = 0;
    // Stores the joined pieces as the data of the key. Pieces that the stored value has already
    // are not written again.
    virtual void setPieces(std::string_view key, const ValuePieces& pieces) = 0;
    virtual void setText(std::string_view key, std::string_view value) = 0;
    virtual void setDate(std::string_view key, Date value) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void remove(std::string_view key) = 0;

    // The keys that begin with `prefix`, in ascending order; all keys for an empty prefix.
    virtual std::vector<std::string> keys(std::string_view prefix) const = 0;

    // Each change of a value gets a number greater than all before. 0 for a key that was never
    // set, and for values from before there were numbers.
    virtual std::uint64_t changeNumber(std::string_view key) const = 0;
    // Change numbers are comparable between stores of the same identity only.
    virtual std::string identity() const = 0;
    // Later changes get numbers greater than `last`, if that is a number of this store. A store
    // whose identity cannot be read now takes the given one.
    virtual void continueNumbers(std::string_view identity, std::uint64_t last) = 0;

    // Tries again to store what was refused, and waits until everything stored is on the disk.
    virtual void makeDurable() = 0;
    virtual DefaultsStatus status() const = 0;
    // Called after each change of the status, on the thread that caused it. An empty function
    // ends it; no call is running when the setter returns.
    virtual void setStatusChanged(std::function<void()> changed) = 0;
};

}  // namespace tembrix
