#pragma once

#include <QStringList>
#include <string>
#include <utility>

#include "base/date.h"

#include "ports/texts.h"

class QApplication;

namespace tembrix {

// The language of the program's texts for a user who reads these languages, best first: the first
// of them that the program speaks, else English.
std::string chooseLanguage(const QStringList& uiLanguages);
// The same for the user of this session, by the environment.
std::string systemLanguage();

// Puts the texts of the toolkit's own dialogs into the language, where the system has them, and the
// dates and numbers of fields, where the system's are in another.
void installDialogTexts(QApplication& application, const std::string& language);

class QtLocale final : public Locale {
  public:
    // `language` is that of the texts in use.
    explicit QtLocale(std::string language) : language_(std::move(language)) {}

    std::string preferredLocalization() const override { return language_; }
    std::string identifier() const override;
    std::string shortDate(Date date, std::string_view localeName) const override;
    std::string fileStamp(Date date) const override;

  private:
    std::string language_;
};

}  // namespace tembrix
