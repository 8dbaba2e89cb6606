#include "adapters/sqlite/sqlite_user_defaults.h"

#include <chrono>
#include <memory>
#include <utility>

#include "adapters/sqlite/defaults_state.h"
#include "adapters/sqlite/delayed_worker.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix {

using sqlite::PendingChange;
using sqlite::SharedPieces;
using sqlite::StoredValue;

namespace {

// Including the time of the work, shorter than the second that a power failure may lose.
constexpr std::chrono::milliseconds upkeepDelay{400};

}  // namespace

struct SqliteUserDefaults::State : sqlite::DefaultsState {
    using sqlite::DefaultsState::DefaultsState;
};

SqliteUserDefaults::SqliteUserDefaults(std::filesystem::path file, Log& log,
                                       std::vector<std::filesystem::path> recoveryFolders)
    : state_(std::make_unique<State>(std::move(file), log, std::move(recoveryFolders))),
      announced_(status()),
      worker_(std::make_unique<sqlite::DelayedWorker>(upkeepDelay, [this] { return upkeep(); })) {
    if (!announced_.allStored)
        worker_->wake();
}

SqliteUserDefaults::~SqliteUserDefaults() {
    worker_.reset();
    state_->finish();
}

bool SqliteUserDefaults::upkeep() {
    const bool again = state_->upkeep();
    announce();
    return again;
}

void SqliteUserDefaults::announce() {
    const std::lock_guard lock(announcing_);
    auto now = status();
    if (now == announced_)
        return;
    announced_ = std::move(now);
    if (statusChanged_)
        statusChanged_();
}

bool SqliteUserDefaults::isDurable() const {
    return state_->isDurable();
}

std::optional<Bytes> SqliteUserDefaults::data(std::string_view key) const {
    auto value = state_->read(key);
    if (!value)
        return std::nullopt;
    if (auto* bytes = std::get_if<Bytes>(&*value))
        return std::move(*bytes);
    if (const auto* pieces = std::get_if<SharedPieces>(&*value))
        return joined(**pieces);
    return std::nullopt;
}

std::optional<std::string> SqliteUserDefaults::text(std::string_view key) const {
    auto value = state_->read(key);
    auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text ? std::optional(std::move(*text)) : std::nullopt;
}

std::optional<Date> SqliteUserDefaults::date(std::string_view key) const {
    const auto value = state_->read(key);
    const auto* date = value ? std::get_if<Date>(&*value) : nullptr;
    return date ? std::optional(*date) : std::nullopt;
}

bool SqliteUserDefaults::boolean(std::string_view key) const {
    const auto value = state_->read(key);
    const auto* boolean = value ? std::get_if<bool>(&*value) : nullptr;
    return boolean && *boolean;
}

void SqliteUserDefaults::change(std::string_view key, PendingChange change) {
    state_->change(key, std::move(change));
    announce();
    worker_->wake();
}

void SqliteUserDefaults::setData(std::string_view key, BytesView value) {
    change(key, {StoredValue(Bytes(value.begin(), value.end()))});
}

void SqliteUserDefaults::setPieces(std::string_view key, const ValuePieces& pieces) {
    // The list is not owned here. It is copied if the change is kept.
    change(key, {StoredValue(SharedPieces(std::shared_ptr<void>(), &pieces))});
}

void SqliteUserDefaults::setText(std::string_view key, std::string_view value) {
    change(key, {StoredValue(std::string(value))});
}

void SqliteUserDefaults::setDate(std::string_view key, Date value) {
    change(key, {StoredValue(value)});
}

void SqliteUserDefaults::setBoolean(std::string_view key, bool value) {
    change(key, {StoredValue(value)});
}

void SqliteUserDefaults::remove(std::string_view key) {
    change(key, {});
}

std::vector<std::string> SqliteUserDefaults::keys(std::string_view prefix) const {
    return state_->keys(prefix);
}

std::uint64_t SqliteUserDefaults::changeNumber(std::string_view key) const {
    return state_->number(key);
}

std::string SqliteUserDefaults::identity() const {
    return state_->identity();
}

void SqliteUserDefaults::continueNumbers(std::string_view identity, std::uint64_t last) {
    state_->continueNumbers(identity, last);
}

void SqliteUserDefaults::makeDurable() {
    if (upkeep())
        worker_->wake();
}

DefaultsStatus SqliteUserDefaults::status() const {
    return state_->status();
}

void SqliteUserDefaults::setStatusChanged(std::function<void()> changed) {
    const std::lock_guard lock(announcing_);
    statusChanged_ = std::move(changed);
}

}  // namespace tembrix
