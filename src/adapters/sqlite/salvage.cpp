#include "adapters/sqlite/salvage.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/result.h"

namespace tembrix::sqlite {

namespace fs = std::filesystem;

namespace {

// The readable keys of a database, read from both ends, so that damage in the middle only loses the
// keys there.
std::vector<std::string> readableKeys(const Database& source) {
    std::vector<std::string> keys;
    for (const auto* sql :
         {"SELECT key FROM value ORDER BY key", "SELECT key FROM value ORDER BY key DESC"}) {
        Statement all(source, sql);
        int code = all.step();
        for (; code == SQLITE_ROW; code = all.step())
            keys.push_back(all.text(0));
        if (code == SQLITE_DONE)
            break;
    }
    return keys;
}

fs::path withEnding(fs::path file, const std::string& ending) {
    return file += ending;
}

}  // namespace

int salvage(Database source, ValueStore& target) {
    // Without this, SQLite refuses a file that is shorter than its header says.
    source.run("PRAGMA writable_schema=ON");
    // The damaged database and its log are not changed.
    sqlite3_db_config(source.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    const auto keys = readableKeys(source);
    ValueStore values(std::move(source));
    int count = 0;
    for (const auto& key : keys) {
        PendingChange change;
        if (values.read(key, change.value) != SQLITE_ROW || !change.value)
            continue;
        values.number(key, change.number);
        if (target.apply(key, change) == SQLITE_DONE)
            ++count;
    }
    std::string identity;
    if (values.identity(identity) == SQLITE_ROW)
        target.setIdentity(identity);
    return count;
}

fs::path moveAside(const fs::path& file) {
    std::error_code error;
    fs::path target;
    for (int number = 1;; ++number) {
        target = withEnding(file, ".damaged-" + std::to_string(number));
        if (!fs::exists(fs::symlink_status(target, error)))
            break;
    }
    fs::rename(file, target, error);
    if (error)
        return {};
    fs::rename(withEnding(file, "-wal"), withEnding(target, "-wal"), error);
    fs::remove(withEnding(file, "-shm"), error);  // created again from the log
    return target;
}

std::optional<Database> openForReading(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error))
        return std::nullopt;
    std::string folder = (fs::temp_directory_path(error) / "tembrix-reading-XXXXXX").string();
    if (!error && ::mkdtemp(folder.data())) {
        const fs::path copy = fs::path(folder) / "copy";
        fs::copy_file(file, copy, error);
        std::error_code noLog;
        if (!error)
            fs::copy_file(withEnding(file, "-wal"), withEnding(copy, "-wal"), noLog);
        auto database = error ? Result<Database>(Error{}) : Database::open(copy, Access::readWrite);
        const bool readable =
            database && database->run("SELECT count(*) FROM sqlite_schema") == SQLITE_OK;
        // The files remain accessible until the connection is closed.
        fs::remove_all(folder, error);
        if (readable)
            return std::move(database).optional();
    }
    return Database::open(file, Access::asItStands).optional();
}

}  // namespace tembrix::sqlite
