#include "adapters/qt/file_keychain.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "base/base64.h"
#include "base/files.h"

namespace tembrix {
namespace fs = std::filesystem;

namespace {

constexpr auto userOnly = fs::perms::owner_read | fs::perms::owner_write;

// Creates the file, readable by the user alone, before it is written. Replacing the file keeps its
// permissions.
bool makePrivate(const fs::path& file) {
    std::error_code error;
    const auto folder = file.parent_path();
    if (fs::create_directories(folder, error))
        fs::permissions(folder, userOnly | fs::perms::owner_exec, error);
    if (!fs::exists(file, error))
        std::ofstream(file, std::ios::binary | std::ios::app);
    fs::permissions(file, userOnly, error);
    return !error;
}

}  // namespace

std::optional<FileKeychain::Items> FileKeychain::load() const {
    const auto content = readFile(file_);
    if (!content) {
        if (content.error().code == ENOENT)
            return Items{};
        log_.line("❌ Keychain: " + content.error().text);
        return std::nullopt;
    }
    Items items;
    if (content->empty())
        return items;  // the process ended after creating the file and before writing it
    const auto document = QJsonDocument::fromJson(QByteArray::fromRawData(
        reinterpret_cast<const char*>(content->data()), static_cast<qsizetype>(content->size())));
    bool good = document.isObject();
    const auto object = document.object();
    for (auto item = object.begin(); good && item != object.end(); ++item) {
        auto value = base64Decode(item->toString().toStdString());
        good = item->isString() && value;
        if (good)
            items.emplace(item.key().toStdString(), std::move(*value));
    }
    if (good)
        return items;
    setAside();
    return Items{};
}

void FileKeychain::setAside() const {
    std::error_code error;
    fs::path aside;
    for (int number = 1; aside.empty() || fs::exists(aside, error); ++number)
        aside = file_.string() + ".damaged-" + std::to_string(number);
    fs::rename(file_, aside, error);
    log_.line("❌ Keychain: damaged file set aside as " + pathText(aside));
}

bool FileKeychain::set(BytesView value, std::string_view account) {
    const std::lock_guard lock(mutex_);
    auto items = load();
    if (!items)
        return false;
    items->insert_or_assign(std::string(account), Bytes(value.begin(), value.end()));
    QJsonObject object;
    for (const auto& [name, bytes] : *items)
        object.insert(QString::fromStdString(name), QString::fromStdString(base64Encode(bytes)));
    const auto text = QJsonDocument(object).toJson();
    if (!makePrivate(file_)) {
        log_.line("❌ Keychain: cannot write " + pathText(file_));
        return false;
    }
    const auto written =
        replaceFile(file_, {reinterpret_cast<const std::uint8_t*>(text.constData()),
                            static_cast<std::size_t>(text.size())});
    if (!written)
        log_.line("❌ Keychain: " + written.error().text);
    return written.ok();
}

std::optional<Bytes> FileKeychain::get(std::string_view account) const {
    const std::lock_guard lock(mutex_);
    const auto items = load();
    if (!items)
        return std::nullopt;
    const auto found = items->find(account);
    if (found == items->end())
        return std::nullopt;
    return found->second;
}

}  // namespace tembrix
