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

// A part of a large value. Pieces are immutable and shared, so that a value of which one piece has
// changed is passed on without copying the others. Equal bytes have equal hashes.
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

// Followed by the key of a value that was damaged or replaced, and by a number if there are
// several.
inline constexpr const char* setAsidePrefix = "damaged_";

// While an object exists, values that its thread stores are repairs: the program stores them
// because it found none, or damaged or older ones, without a change by the user. A store that
// cannot write uses them until it can. Then it stores those whose values are still the ones that
// were repaired, and otherwise uses its own values again, which it could not read before.
class RepairScope {
  public:
    RepairScope() { ++depth; }
    ~RepairScope() { --depth; }
    RepairScope(const RepairScope&) = delete;
    RepairScope& operator=(const RepairScope&) = delete;

    static bool active() { return depth > 0; }

  private:
    static inline thread_local int depth = 0;
};

// What happened to the stored values since the program was started, so that the user can be told.
struct DefaultsIncidents {
    // The database was damaged. It was renamed, and its readable values are in a new one.
    bool databaseReplaced = false;
    // The changes that an earlier run could not store cannot be read.
    bool recoveryFileDamaged = false;
    // Changes were made while the stored values could not be read. These differ and are kept under
    // their keys with the prefix for values set aside.
    bool valuesSetAside = false;
    bool operator==(const DefaultsIncidents&) const = default;
};

enum class StorageFault { other, diskFull, readOnly, unreachable };

// Whether all values are stored on the disk and, if not, the reason; and what happened to them.
struct DefaultsStatus {
    bool allStored = true;
    std::string reason = {};  // in English, for the log
    StorageFault fault = StorageFault::other;
    bool synced = true;  // what is stored would survive a power failure as well
    DefaultsIncidents incidents = {};
    bool operator==(const DefaultsStatus&) const = default;
};

// Values by key that are kept after the process has ended. When a call returns, the value is safe
// even if the process is killed. A value read with another type than it was stored with is absent.
// A value that cannot be stored is kept in memory, read from there, and stored as soon as possible;
// `status` reports this. Thread-safe.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    virtual std::optional<Bytes> data(std::string_view key) const = 0;
    virtual std::optional<std::string> text(std::string_view key) const = 0;
    virtual std::optional<Date> date(std::string_view key) const = 0;
    virtual bool boolean(std::string_view key) const = 0;  // false when absent

    virtual void setData(std::string_view key, BytesView value) = 0;
    // Stores the joined pieces as the data of the key. Pieces that are already stored are not
    // written again.
    virtual void setPieces(std::string_view key, const ValuePieces& pieces) = 0;
    virtual void setText(std::string_view key, std::string_view value) = 0;
    virtual void setDate(std::string_view key, Date value) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void remove(std::string_view key) = 0;

    // The keys that start with `prefix`, in ascending order; all keys for an empty prefix.
    virtual std::vector<std::string> keys(std::string_view prefix) const = 0;

    // Each change of a value gets a higher number than all earlier changes. 0 for a key that was
    // never set or was set before numbers were introduced.
    virtual std::uint64_t changeNumber(std::string_view key) const = 0;
    // Change numbers can be compared only between stores with the same identity.
    virtual std::string identity() const = 0;
    // Makes later changes get higher numbers than `last` if that is a number of this store. A store
    // whose identity cannot be read at present uses the given one.
    virtual void continueNumbers(std::string_view identity, std::uint64_t last) = 0;

    // Tries again to store refused values, and waits until all stored values are on the disk.
    virtual void makeDurable() = 0;
    virtual DefaultsStatus status() const = 0;
    // Sets a function that is called after each change of the status, on the thread that caused it.
    // An empty function removes it; no call is running when the setter returns.
    virtual void setStatusChanged(std::function<void()> changed) = 0;
};

}  // namespace tembrix
