#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <variant>

#include "ports/user_defaults.h"

#include "fakes/interleaving.h"

namespace tembrix {

// User defaults that live as long as the object. They pass the same contract test as the database.
class MemoryUserDefaults final : public UserDefaults {
  public:
    std::optional<Bytes> data(std::string_view key) const override { return get<Bytes>(key); }
    std::optional<std::string> text(std::string_view key) const override {
        return get<std::string>(key);
    }
    std::optional<Date> date(std::string_view key) const override { return get<Date>(key); }
    bool boolean(std::string_view key) const override { return get<bool>(key).value_or(false); }

    void setData(std::string_view key, BytesView value) override {
        set(key, Bytes(value.begin(), value.end()));
    }
    void setText(std::string_view key, std::string_view value) override {
        set(key, std::string(value));
    }
    void setDate(std::string_view key, Date value) override { set(key, value); }
    void setBoolean(std::string_view key, bool value) override { set(key, value); }
    void remove(std::string_view key) override {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found != values_.end())
            values_.erase(found);
    }

    std::vector<std::string> keys(std::string_view prefix) const override {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        std::vector<std::string> keys;
        for (auto it = values_.lower_bound(prefix);
             it != values_.end() && std::string_view(it->first).starts_with(prefix); ++it)
            keys.push_back(it->first);
        return keys;
    }

  private:
    using Value = std::variant<Bytes, std::string, Date, bool>;

    template <class T>
    std::optional<T> get(std::string_view key) const {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found == values_.end() || !std::holds_alternative<T>(found->second))
            return std::nullopt;
        return std::get<T>(found->second);
    }
    void set(std::string_view key, Value value) {
        Interleaving::pausePoint();
        const std::lock_guard lock(mutex_);
        values_.insert_or_assign(std::string(key), std::move(value));
    }

    mutable std::mutex mutex_;
    std::map<std::string, Value, std::less<>> values_;
};

}  // namespace tembrix
