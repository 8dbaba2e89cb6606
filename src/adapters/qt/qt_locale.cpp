#include "adapters/qt/qt_locale.h"

#include <QApplication>
#include <QDateTime>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <cmath>

namespace tembrix {
namespace {

QDateTime localTime(Date date) {
    return QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(std::floor(date.secondsSince1970 * 1000)));
}

}  // namespace

std::string chooseLanguage(const QStringList& uiLanguages) {
    for (const auto& name : uiLanguages) {
        const auto language = QLocale(name).language();
        // Uzbek users get the Russian texts and collections.
        if (language == QLocale::Russian || language == QLocale::Uzbek)
            return "ru";
        if (language == QLocale::English)
            return "en";
    }
    return "en";
}

std::string systemLanguage() {
    return chooseLanguage(QLocale::system().uiLanguages());
}

void installDialogTexts(QApplication& application, const std::string& language) {
    auto* translator = new QTranslator(&application);
    if (translator->load(QLocale(QString::fromStdString(language)), "qtbase", "_",
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        application.installTranslator(translator);
    // Dates and numbers in fields match the language of the texts. The "C" locale counts as no
    // choice.
    const QLocale ofTexts(QString::fromStdString(language));
    const QLocale system = QLocale::system();
    if (system.language() != ofTexts.language() || system.dateFormat() == QLocale::c().dateFormat())
        QLocale::setDefault(ofTexts);
}

std::string QtLocale::identifier() const {
    return QLocale::system().name().toStdString();
}

std::string QtLocale::shortDate(Date date, std::string_view localeName) const {
    const QLocale locale(QString::fromUtf8(localeName.data(), static_cast<int>(localeName.size())));
    return locale.toString(localTime(date).date(), QLocale::ShortFormat).toStdString();
}

std::string QtLocale::fileStamp(Date date) const {
    return QLocale::c().toString(localTime(date), "yyyy-MM-dd_HH-mm").toStdString();
}

}  // namespace tembrix
