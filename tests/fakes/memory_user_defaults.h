#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <variant>

#include "base/uuid.h"

#include "ports/user_defaults.h"

#include "fakes/interleaving.h"

namespace tembrix {

// User defaults in memory. They pass the same contract test as the database. Writes can be refused
// like on a full disk, and refused values can be lost like in a killed process.
class MemoryUserDefaults final : public UserDefaults {
  public:
    std::optional<Bytes> data(std::string_view key) const override { return get<Bytes>(key); }
    std::optional<std::string> text(std::string_view key) const override {
        return get<std::string>(key);
    }
    std::optional<Date> date(std::string_view key) const override { return get<Date>(key); }
    bool boolean(std::string_view key) const override { return get<bool>(key).value_or(false); }

    void setData(std::string_view key, BytesView value) override {
        change(key, Bytes(value.begin(), value.end()));
    }
    void setPieces(std::string_view key, const ValuePieces& pieces) override {
        change(key, joined(pieces));
    }
    void setText(std::string_view key, std::string_view value) override {
        change(key, std::string(value));
    }
    void setDate(std::string_view key, Date value) override { change(key, value); }
    void setBoolean(std::string_view key, bool value) override { change(key, value); }
    void remove(std::string_view key) override { change(key, std::monostate()); }

    std::vector<std::string> keys(std::string_view prefix) const override {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        std::vector<std::string> keys;
        for (auto it = now_.lower_bound(prefix);
             it != now_.end() && std::string_view(it->first).starts_with(prefix); ++it)
            if (!std::holds_alternative<std::monostate>(it->second.value))
                keys.push_back(it->first);
        return keys;
    }

    std::uint64_t changeNumber(std::string_view key) const override {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        const auto found = now_.find(key);
        return found == now_.end() ? 0 : found->second.number;
    }
    std::string identity() const override { return identity_; }
    void continueNumbers(std::string_view identity, std::uint64_t last) override {
        const std::lock_guard lock(mutex_);
        if (identity == identity_)
            lastNumber_ = std::max(lastNumber_, last);
    }

    void makeDurable() override {
        {
            const std::lock_guard lock(mutex_);
            if (!refusal_.empty())
                return;
            stored_ = now_;
        }
        announce();
    }
    DefaultsStatus status() const override {
        const std::lock_guard lock(mutex_);
        return status_;
    }
    void setStatusChanged(std::function<void()> changed) override {
        const std::lock_guard lock(mutex_);
        changed_ = std::move(changed);
    }

    // Refuses all writes from now on. An empty reason accepts them again.
    void refuse(std::string reason) {
        const std::lock_guard lock(mutex_);
        refusal_ = std::move(reason);
    }
    // From now on, values that are stored are not synced, until it is switched off.
    void delaySync(bool delays) {
        {
            const std::lock_guard lock(mutex_);
            delaysSync_ = delays;
            unsynced_ = false;
        }
        announce();
    }
    // Simulates the end of the process: refused values are lost.
    void loseRefused() {
        const std::lock_guard lock(mutex_);
        now_ = stored_;
        status_ = {};
    }
    // Simulates damage: the value and its number are gone.
    void lose(std::string_view key) {
        const std::lock_guard lock(mutex_);
        for (auto* entries : {&now_, &stored_})
            if (const auto found = entries->find(key); found != entries->end())
                entries->erase(found);
    }
    // Simulates a truncated log: restores all values and change numbers of an earlier moment.
    struct Moment;
    Moment moment() const;
    void goBackTo(const Moment& moment);
    // The same for one value.
    void goBack(std::string_view key, BytesView value, std::uint64_t number) {
        const std::lock_guard lock(mutex_);
        now_[std::string(key)] =
            stored_[std::string(key)] = {Bytes(value.begin(), value.end()), number};
        lastNumber_ = number;
    }

  private:
    using Value = std::variant<std::monostate, Bytes, std::string, Date, bool>;
    struct Entry {
        Value value;
        std::uint64_t number = 0;
    };
    using Entries = std::map<std::string, Entry, std::less<>>;

    template <class T>
    std::optional<T> get(std::string_view key) const {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        const auto found = now_.find(key);
        if (found == now_.end() || !std::holds_alternative<T>(found->second.value))
            return std::nullopt;
        return std::get<T>(found->second.value);
    }
    void change(std::string_view key, Value value) {
        Interleaving::pausePoint();
        {
            const std::lock_guard lock(mutex_);
            const Entry entry{std::move(value), ++lastNumber_};
            now_.insert_or_assign(std::string(key), entry);
            if (refusal_.empty() && status_.allStored)
                stored_.insert_or_assign(std::string(key), entry);
            else if (refusal_.empty())
                stored_ = now_;
            unsynced_ = delaysSync_;
        }
        announce();
    }
    void announce() {
        std::function<void()> changed;
        {
            const std::lock_guard lock(mutex_);
            DefaultsStatus now = status_;
            now.allStored = refusal_.empty();
            now.reason = refusal_;
            now.synced = !unsynced_;
            const bool moved = now != status_;
            status_ = now;
            if (moved)
                changed = changed_;
        }
        if (changed)
            changed();
    }

    mutable std::mutex mutex_;
    Entries now_;
    Entries stored_;
    std::uint64_t lastNumber_ = 0;
    const std::string identity_ = freshId();
    std::string refusal_;
    bool delaysSync_ = false;
    bool unsynced_ = false;
    DefaultsStatus status_;
    std::function<void()> changed_;
};

struct MemoryUserDefaults::Moment {
    Entries entries;
    std::uint64_t lastNumber;
};

inline MemoryUserDefaults::Moment MemoryUserDefaults::moment() const {
    const std::lock_guard lock(mutex_);
    return {now_, lastNumber_};
}

inline void MemoryUserDefaults::goBackTo(const Moment& moment) {
    const std::lock_guard lock(mutex_);
    now_ = stored_ = moment.entries;
    lastNumber_ = moment.lastNumber;
}

}  // namespace tembrix
