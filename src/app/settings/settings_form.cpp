#include "app/settings/settings_form.h"

#include <QGridLayout>
#include <QLabel>

#include "ports/texts.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

namespace tembrix {

namespace {

constexpr int nameWidth = 190;
constexpr int manyRows = 100;  // the space below the last row

}  // namespace

SettingsForm::SettingsForm(const Texts& texts, QWidget* parent)
    : QWidget(parent), texts_(texts), grid_(new QGridLayout(this)) {
    grid_->setContentsMargins(0, 0, 0, 0);
    grid_->setHorizontalSpacing(theme::margin);
    grid_->setVerticalSpacing(theme::spacing);
    grid_->setColumnMinimumWidth(0, nameWidth);
    grid_->setColumnStretch(1, 1);
    grid_->setRowStretch(manyRows, 1);
}

void SettingsForm::addRow(std::string_view key, QWidget* control, std::string_view hintKey) {
    const int row = rows_++;
    auto* name = makeLabel(texts_, key, LabelLook::body, this);
    name->setObjectName(name->objectName() + ".name");
    name->setMinimumHeight(theme::controlHeight);
    name->setFixedWidth(nameWidth);
    name->setBuddy(control);
    nameControl(control, texts_, key);
    grid_->addWidget(name, row, 0, Qt::AlignTop);
    // A control of a fixed width would stand in the middle.
    const bool fixed = control->maximumWidth() < QWIDGETSIZE_MAX;
    grid_->addWidget(control, row, 1, fixed ? Qt::AlignLeft : Qt::Alignment());
    addHint(hintKey);
}

void SettingsForm::addCheck(QWidget* box, std::string_view hintKey) {
    grid_->addWidget(box, rows_++, 1);
    addHint(hintKey);
}

void SettingsForm::addHint(std::string_view key) {
    if (key.empty())
        return;
    auto* hint = makeLabel(texts_, key, LabelLook::secondary, this);
    grid_->addWidget(hint, rows_++, 1);
    addGap();
}

QLabel* SettingsForm::addWarning(std::string_view objectName) {
    auto* label = new QLabel(this);
    label->setObjectName(qtext(objectName));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    setLook(label, LabelLook::warning);
    label->hide();
    grid_->addWidget(label, rows_++, 1);
    return label;
}

void SettingsForm::addGap() {
    grid_->setRowMinimumHeight(rows_++, theme::unit);
}

void showWarning(QLabel* label, const QString& text) {
    label->setText(text);
    label->setAccessibleName(text);
    label->setVisible(!text.isEmpty());
}

}  // namespace tembrix
