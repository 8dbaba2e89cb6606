#include "adapters/qt/qt_locale.h"

#include <QApplication>
#include <QDateTime>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <QWidget>
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
    const QString name = QStringLiteral("dialogTexts");
    delete application.findChild<QTranslator*>(name, Qt::FindDirectChildrenOnly);
    auto* translator = new QTranslator(&application);
    translator->setObjectName(name);
    if (translator->load(QLocale(QString::fromStdString(language)), "qtbase", "_",
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        application.installTranslator(translator);
    // Dates and numbers in fields match the language of the texts. The "C" locale counts as no
    // choice.
    const QLocale ofTexts(QString::fromStdString(language));
    const QLocale system = QLocale::system();
    const bool suits =
        system.language() == ofTexts.language() && system.dateFormat() != QLocale::c().dateFormat();
    QLocale::setDefault(suits ? system : ofTexts);
    for (QWidget* window : QApplication::topLevelWidgets())
        window->unsetLocale();
}

std::string QtLocale::identifier() const {
    return QLocale::system().name().toStdString();
}

std::string QtLocale::shortDate(Date date, std::string_view localeName) const {
    const QLocale locale(QString::fromUtf8(localeName.data(), static_cast<int>(localeName.size())));
    return locale.toString(localTime(date).date(), QLocale::ShortFormat).toStdString();
}

std::string QtLocale::dateAndTime(Date date) const {
    const QLocale locale;
    const QDateTime moment = localTime(date);
    return (locale.toString(moment, "d MMMM yyyy") + ", " +
            locale.toString(moment.time(), QLocale::ShortFormat))
        .toStdString();
}

std::string QtLocale::fileStamp(Date date) const {
    return QLocale::c().toString(localTime(date), "yyyy-MM-dd_HH-mm").toStdString();
}

}  // namespace tembrix
