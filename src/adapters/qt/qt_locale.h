#pragma once

#include <QStringList>
#include <string>
#include <utility>

#include "base/date.h"

#include "ports/texts.h"

class QApplication;

namespace tembrix {

// The language of the program's texts: the first of the user's languages, best first, that the
// program supports, else English.
std::string chooseLanguage(const QStringList& uiLanguages);
// The language for the user of this session, from the environment.
std::string systemLanguage();

// Translates Qt's own dialogs if the translation is installed. Sets the format of dates and numbers
// in fields: that of the system if its language is the same. May be called again for another
// language.
void installDialogTexts(QApplication& application, const std::string& language);

class QtLocale final : public Locale {
  public:
    // `language` is the language of the texts.
    explicit QtLocale(std::string language) : language_(std::move(language)) {}

    void setLanguage(std::string language) { language_ = std::move(language); }

    std::string preferredLocalization() const override { return language_; }
    std::string identifier() const override;
    std::string shortDate(Date date, std::string_view localeName) const override;
    std::string dateAndTime(Date date) const override;
    std::string fileStamp(Date date) const override;

  private:
    std::string language_;
};

}  // namespace tembrix
