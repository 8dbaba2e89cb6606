#include "adapters/qt/file_texts.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

#include "base/files.h"

namespace tembrix {

FileTexts::FileTexts(std::filesystem::path folder, const std::string& language, Log& log)
    : folder_(std::move(folder)), log_(log) {
    load(language);
}

void FileTexts::setLanguage(const std::string& language) {
    load(language);
    changed.emit();
}

void FileTexts::load(const std::string& language) {
    texts_.clear();
    const auto file = folder_ / (language + ".json");
    const auto content = readFile(file);
    if (!content) {
        log_.line("❌ Texts: " + content.error().text);
        return;
    }
    QJsonParseError error{};
    const auto document =
        QJsonDocument::fromJson(QByteArray(reinterpret_cast<const char*>(content->data()),
                                           static_cast<qsizetype>(content->size())),
                                &error);
    if (!document.isObject()) {
        log_.line("❌ Texts: " + pathText(file) + ": " + error.errorString().toStdString());
        return;
    }
    const auto object = document.object();
    for (auto item = object.begin(); item != object.end(); ++item)
        texts_.emplace(item.key().toStdString(), item->toString().toStdString());
}

std::string FileTexts::text(std::string_view key) const {
    const auto found = texts_.find(key);
    return found == texts_.end() ? std::string(key) : found->second;
}

}  // namespace tembrix
