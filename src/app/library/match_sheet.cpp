#include "app/library/match_sheet.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QMouseEvent>
#include <QPushButton>
#include <QStyleOptionComboBox>
#include <QVBoxLayout>

#include "base/files.h"
#include "base/shortened.h"
#include "base/utf8_text.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_focus.h"
#include "app/widgets/translated.h"

namespace tembrix {

namespace {
constexpr int fieldWidth = theme::nameFieldWidth;

// The user's date format with four digits for the year, because two digits would be read as a year
// of the last century.
QString dateFormat() {
    QString format = QLocale().dateTimeFormat(QLocale::ShortFormat);
    if (!format.contains(QStringLiteral("yyyy")))
        format.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return format;
}

// A date field whose calendar opens by Alt+Down as well, like the list of a choice box.
class DateField final : public QDateTimeEdit {
  public:
    using QDateTimeEdit::QDateTimeEdit;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        const bool down = event->key() == Qt::Key_Down && event->modifiers() & Qt::AltModifier;
        if (!down && event->key() != Qt::Key_F4)
            return QDateTimeEdit::keyPressEvent(event);
        // Qt opens the calendar only for a press on the arrow.
        QStyleOptionComboBox option;
        option.initFrom(this);
        const QRect arrow =
            style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this);
        QMouseEvent press(QEvent::MouseButtonPress, arrow.center(), mapToGlobal(arrow.center()),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(this, &press);
    }
};

}  // namespace

MatchSheet::MatchSheet(QWidget* parent, const Texts& texts, const Locale& locale,
                       FocusStateManager& focus, const VideoMetadata& initial,
                       const std::filesystem::path& file, std::size_t waiting)
    : Sheet(parent, texts, "videosViewTitleMatchInfo"),
      locale_(locale),
      fileName_(qtext(shortened(sanitizedUtf8(pathText(file.filename()))))) {
    auto* fileLabel = new ElidedLabel({}, this);
    fileLabel->setObjectName(QStringLiteral("matchSheetFile"));
    fileLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);  // the fields are as wide
    followLanguage(this, texts, [this, fileLabel] {
        fileLabel->setFullText(
            qtext(this->texts().format("matchSheetFile", {utf8Text(fileName_)})));
    });
    setLook(fileLabel, LabelLook::secondary);
    content()->addWidget(fileLabel);
    if (waiting > 0) {
        auto* more = makeLabel(texts, "matchSheetWaiting", LabelLook::secondary);
        followLanguage(this, texts, [this, more, count = static_cast<int>(waiting)] {
            more->setText(qtext(this->texts().counted("matchSheetWaiting", count)));
            more->setAccessibleName(more->text());
        });
        content()->addWidget(more);
    }
    team1_ = addField(focus, "videosViewFieldTeam1", "enterTeam1Name", initial.team1);
    team2_ = addField(focus, "videosViewFieldTeam2", "enterTeam2Name", initial.team2);
    score_ = addField(focus, "videosViewFieldScore", "enterScore", initial.score);

    const auto seconds = static_cast<qint64>(initial.dateTime.secondsSince1970);
    date_ = new DateField(QDateTime::fromSecsSinceEpoch(seconds));
    date_->setDisplayFormat(dateFormat());
    date_->setCalendarPopup(true);
    new TextFocusTracker(date_, focus);
    content()->addWidget(labeled(texts, "videosViewFieldDateTime", date_));

    underFileName_ = makeCheckBox(texts, "matchSheetUnderFileName");
    content()->addWidget(underFileName_);
    name_ = new ElidedLabel;
    name_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    content()->addWidget(labeled(texts, "matchSheetName", name_));
    note_ = makeLabel(texts, "matchSheetEmpty", LabelLook::secondary);
    content()->addWidget(note_);
    connect(underFileName_, &QCheckBox::clicked, this, [this](bool checked) {
        wantsFileName_ = checked;
        showName();
    });
    connect(date_, &QDateTimeEdit::dateTimeChanged, this, &MatchSheet::showName);
    for (const auto* field : {team1_, team2_, score_})
        connect(field, &QLineEdit::textChanged, this, &MatchSheet::showName);
    followLanguage(this, texts, [this] { showName(); });

    if (waiting > 0)
        connect(addSideButton("matchSheetAddAll"), &QPushButton::clicked, this, [this] {
            Q_EMIT addAllChosen();
            reject();
        });
    addCancelButton(waiting > 0 ? "matchSheetSkip" : "cancelButtonTitle");
    addAcceptButton("saveButtonTitle");
    team1_->setFocus();
}

void MatchSheet::showName() {
    const std::string title = matchTitle(VideoMetadata{team1(), team2(), score(), date(), {}});
    const bool nothing = title.empty();
    underFileName_->setEnabled(!nothing);
    underFileName_->setChecked(nothing || wantsFileName_);
    name_->setFullText(underFileName() ? fileName_ : qtext(title));
    QString note = qtext(texts().text("matchSheetEmpty"));
    if (!nothing)
        note = underFileName() ? QString(QChar::Nbsp) : qtext(locale_.dateAndTime(date()));
    note_->setText(note);  // always one line, so that the sheet does not jump while the user types
}

FocusAwareLineEdit* MatchSheet::addField(FocusStateManager& focus, const char* key,
                                         const char* prompt, const std::string& value) {
    auto* field = new FocusAwareLineEdit(focus);
    showText(field, texts(), prompt, &QLineEdit::placeholderText, &QLineEdit::setPlaceholderText);
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

bool MatchSheet::underFileName() const {
    return underFileName_->isChecked();
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
