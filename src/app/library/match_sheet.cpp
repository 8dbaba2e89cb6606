#include "app/library/match_sheet.h"

#include <QDateTimeEdit>
#include <QLocale>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_focus.h"

namespace tembrix {

namespace {
constexpr int fieldWidth = 320;

// The user's date format with four digits for the year, because two digits would be read as a year
// of the last century.
QString dateFormat() {
    QString format = QLocale().dateTimeFormat(QLocale::ShortFormat);
    if (!format.contains(QStringLiteral("yyyy")))
        format.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return format;
}

}  // namespace

MatchSheet::MatchSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                       const VideoMetadata& initial)
    : Sheet(parent, texts, "videosViewTitleMatchInfo") {
    team1_ = addField(focus, "videosViewFieldTeam1", "enterTeam1Name", initial.team1);
    team2_ = addField(focus, "videosViewFieldTeam2", "enterTeam2Name", initial.team2);
    score_ = addField(focus, "videosViewFieldScore", "enterScore", initial.score);

    const auto seconds = static_cast<qint64>(initial.dateTime.secondsSince1970);
    date_ = new QDateTimeEdit(QDateTime::fromSecsSinceEpoch(seconds));
    date_->setDisplayFormat(dateFormat());
    date_->setCalendarPopup(true);
    new TextFocusTracker(date_, focus);
    content()->addWidget(labeled(texts, "videosViewFieldDateTime", date_));

    addCancelButton("cancelButtonTitle");
    addAcceptButton("saveButtonTitle");
    team1_->setFocus();
}

FocusAwareLineEdit* MatchSheet::addField(FocusStateManager& focus, const char* key,
                                         const char* prompt, const std::string& value) {
    auto* field = new FocusAwareLineEdit(focus);
    field->setPlaceholderText(qtext(texts().text(prompt)));
    field->setText(qtext(value));
    field->setMinimumWidth(fieldWidth);
    content()->addWidget(labeled(texts(), key, field));
    return field;
}

std::string MatchSheet::team1() const {
    return utf8Text(team1_->text());
}
std::string MatchSheet::team2() const {
    return utf8Text(team2_->text());
}
std::string MatchSheet::score() const {
    return utf8Text(score_->text());
}
Date MatchSheet::date() const {
    return Date{static_cast<double>(date_->dateTime().toSecsSinceEpoch())};
}

RenameSheet::RenameSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                         const std::string& name)
    : Sheet(parent, texts, "videosViewDialogRenameVideo") {
    name_ = new FocusAwareLineEdit(focus);
    name_->setPlaceholderText(qtext(texts.text("enterNewName")));
    name_->setText(qtext(name));
    name_->setMinimumWidth(fieldWidth);
    name_->selectAll();
    content()->addWidget(labeled(texts, "videosViewFieldFileName", name_));
    addCancelButton("cancelButtonTitle");
    addAcceptButton("saveButtonTitle");
    name_->setFocus();
}

std::string RenameSheet::name() const {
    // A name of blanks would make an unreadable card. With an empty name, the card shows the file
    // name.
    return name_->text().trimmed().isEmpty() ? std::string() : utf8Text(name_->text());
}

}  // namespace tembrix
