#include "adapters/qt/qt_directories.h"

#include <QFile>
#include <QStandardPaths>

namespace tembrix {
namespace {

constexpr auto programFolder = "tembrix-stat";

std::filesystem::path pathOf(const QString& text) {
    return QFile::encodeName(text).toStdString();
}
std::filesystem::path standardPath(QStandardPaths::StandardLocation location) {
    return pathOf(QStandardPaths::writableLocation(location));
}

}  // namespace

Directories qtDirectories() {
    return {standardPath(QStandardPaths::DocumentsLocation),
            standardPath(QStandardPaths::GenericDataLocation),
            standardPath(QStandardPaths::GenericCacheLocation) / programFolder};
}

std::filesystem::path programDataFolder() {
    return standardPath(QStandardPaths::GenericDataLocation) / programFolder;
}

std::filesystem::path programStateFolder() {
    const auto set = qgetenv("XDG_STATE_HOME");
    const std::filesystem::path folder =
        set.startsWith('/') ? std::filesystem::path(set.toStdString())
                            : standardPath(QStandardPaths::HomeLocation) / ".local" / "state";
    return folder / programFolder;
}

}  // namespace tembrix
