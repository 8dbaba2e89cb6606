#include "adapters/sqlite/salvage.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/files.h"
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

constexpr const char* salvagedEnding = ".salvaged";

int firstRead(Database& database) {
    return database.run("SELECT count(*) FROM sqlite_schema");
}

fs::path withEnding(fs::path file, const std::string& ending) {
    return file += ending;
}

}  // namespace

int salvage(Database source, ValueStore& target, int& count) {
    // Without this, SQLite refuses a file that is shorter than its header says.
    source.run("PRAGMA writable_schema=ON");
    source.leaveLog();
    const auto keys = readableKeys(source);
    ValueStore values(std::move(source));
    for (const auto& key : keys) {
        PendingChange change;
        if (values.read(key, change.value) != SQLITE_ROW || !change.value)
            continue;
        values.number(key, change.number);
        if (const int code = target.apply(key, change); code != SQLITE_DONE)
            return code;
        ++count;
    }
    std::string identity;
    if (values.identity(identity) == SQLITE_ROW)
        if (const int code = target.setIdentity(identity); code != SQLITE_DONE)
            return code;
    return SQLITE_OK;
}

int salvageBeside(const fs::path& file, int& count) {
    auto source = Database::open(file, Access::alone);
    int code = source ? firstRead(*source) : source.error().code;
    if ((code & 0xFF) == SQLITE_BUSY) {  // another program has opened it
        source = Database::open(file, Access::readWrite);
        code = source ? firstRead(*source) : source.error().code;
    }
    // Any other error may be gone at the next attempt. The values would be lost now.
    if (code != SQLITE_OK && code != SQLITE_ERROR && !isDamage(code))
        return code;
    const fs::path part = withEnding(file, ".salvaging");
    std::error_code error;
    fs::remove(part, error);
    {
        auto made = Database::open(part, Access::readWrite);
        if (!made)
            return made.error().code;
        code = made->run(
            "PRAGMA page_size=4096; PRAGMA journal_mode=MEMORY;"
            "PRAGMA synchronous=OFF");
        if (code == SQLITE_OK)
            code = ValueStore::prepare(*made);
        if (code == SQLITE_OK) {
            ValueStore target(std::move(made).value());
            code = salvage(std::move(source).value(), target, count);
        }
    }
    if (code == SQLITE_OK && !syncTree(part))
        code = SQLITE_IOERR_FSYNC;
    if (code == SQLITE_OK)
        fs::rename(part, withEnding(file, salvagedEnding), error);
    if (code == SQLITE_OK && error)
        code = SQLITE_CANTOPEN;
    if (code != SQLITE_OK)
        fs::remove(part, error);
    return code;
}

bool putSalvagedInPlace(const fs::path& file, fs::path& aside) {
    std::error_code error;
    const fs::path salvaged = withEnding(file, salvagedEnding);
    if (!fs::exists(salvaged, error))
        return false;
    if (fs::exists(fs::symlink_status(file, error))) {
        aside = moveAside(file);
        if (aside.empty())
            return false;
    }
    fs::rename(salvaged, file, error);
    return !error;
}

fs::path moveAside(const fs::path& file) {
    std::error_code error;
    const fs::path log = withEnding(file, "-wal");
    const bool hasLog = fs::exists(log, error);
    fs::path target;
    for (int number = 1;; ++number) {
        target = withEnding(file, ".damaged-" + std::to_string(number));
        if (!fs::exists(fs::symlink_status(target, error)) &&
            !(hasLog && fs::exists(withEnding(target, "-wal"), error)))
            break;
    }
    // The log first: if the process is killed in between, the next start finds the free name again
    // and moves the file to its log.
    if (hasLog)
        fs::rename(log, withEnding(target, "-wal"), error);
    else
        error.clear();
    if (error)
        return {};
    fs::rename(file, target, error);
    if (error) {
        if (hasLog)
            fs::rename(withEnding(target, "-wal"), log, error);
        return {};
    }
    fs::remove(withEnding(file, "-shm"), error);  // created again from the log
    return target;
}

std::optional<Database> openForReading(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error))
        return std::nullopt;
    if (auto alone = Database::open(file, Access::alone)) {
        const int code = firstRead(*alone);
        if (code == SQLITE_OK || isDamage(code))
            return std::move(alone).optional();
    }
    const fs::path log = withEnding(file, "-wal");
    const bool hasLog = fs::exists(log, error) && fs::file_size(log, error) != 0;
    std::string folder = (fs::temp_directory_path(error) / "tembrix-reading-XXXXXX").string();
    if (!error && ::mkdtemp(folder.data())) {
        const fs::path copy = fs::path(folder) / "copy";
        fs::copy_file(file, copy, error);
        if (!error && hasLog)
            fs::copy_file(log, withEnding(copy, "-wal"), error);
        auto database = error ? Result<Database>(Error{}) : Database::open(copy, Access::readWrite);
        const bool readable = database && firstRead(*database) == SQLITE_OK;
        // The files remain accessible until the connection is closed.
        fs::remove_all(folder, error);
        if (readable)
            return std::move(database).optional();
    }
    if (hasLog)
        return std::nullopt;
    return Database::open(file, Access::asItStands).optional();
}

}  // namespace tembrix::sqlite
