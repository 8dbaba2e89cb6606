#include "adapters/sqlite/stored_value.h"

#include <system_error>
#include <utility>
#include <variant>

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix {

std::optional<Bytes> readStoredValue(const std::filesystem::path& file, std::string_view key) {
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored))
        return std::nullopt;
    auto database = sqlite::Database::open(file, sqlite::Access::asOthersWrite);
    if (!database)
        return std::nullopt;
    sqlite::ValueStore store(std::move(*database));
    std::optional<sqlite::StoredValue> value;
    store.read(key, value);
    auto* bytes = value ? std::get_if<Bytes>(&*value) : nullptr;
    return bytes ? std::optional(std::move(*bytes)) : std::nullopt;
}

}  // namespace tembrix
