#include "app/settings/key_editor.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QVBoxLayout>
#include <algorithm>

#include "base/shortened.h"

#include "ports/texts.h"

#include "app/settings/settings_form.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/key_capture_view.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"
#include "core/collections/tag_library_manager.h"
#include "core/commands/command_keys.h"
#include "core/commands/commands.h"
#include "core/keyboard/hot_key_codes.h"

namespace tembrix {

namespace {
constexpr const char* escape = "Esc";  // ends the recording without a key
constexpr std::size_t shownUses = 2;   // hot keys that a warning names
}  // namespace

QString conflictText(const SettingsServices& services, const std::string& key,
                     const KeyConflicts& conflicts) {
    const Texts& texts = services.texts;
    const std::string caption = commandKeyCaption(key);
    QStringList sentences;
    if (conflicts.refusal)
        sentences << qtext(texts.format(conflicts.refusal, {caption}));
    for (const Command command : conflicts.fixed)
        sentences << qtext(
            texts.format("keyIsFixed", {caption, services.commands.name(command, texts)}));
    for (const Command command : conflicts.commands)
        sentences << qtext(
            texts.format("keyOfCommand", {caption, services.commands.name(command, texts)}));
    const auto& uses = conflicts.hotkeys;
    for (std::size_t i = 0; i < std::min(uses.size(), shownUses); ++i)
        sentences << qtext(uses[i].label.empty()
                               ? texts.format("keyOfTag", {caption, shortened(uses[i].tag)})
                               : texts.format("keyOfLabel", {caption, shortened(uses[i].label),
                                                             shortened(uses[i].tag)}));
    if (uses.size() > shownUses)
        sentences << qtext(texts.format("keyOfMore", {std::to_string(uses.size() - shownUses)}));
    return sentences.join(' ');
}

KeyEditor::KeyEditor(const SettingsServices& services, QWidget* parent)
    : QWidget(parent), services_(services), capture_(services.scheduler) {
    const Texts& texts = services.texts;
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::spacing);
    name_ = new QLabel(this);
    name_->setObjectName("keyEditorCommand");
    name_->setFont(theme::font(theme::textSize, QFont::DemiBold));
    help_ = new QLabel(this);
    help_->setWordWrap(true);
    setLook(help_, LabelLook::secondary);
    column->addWidget(name_);
    column->addWidget(help_);

    auto* row = new QHBoxLayout;
    row->setSpacing(theme::spacing);
    keysBox_ = new QWidget(this);
    keys_ = new QHBoxLayout(keysBox_);
    keys_->setContentsMargins(0, 0, 0, 0);
    keys_->setSpacing(theme::spacing);
    const auto translate = [&services](const QKeyEvent& event) {
        return byLetter(services.translate(event));
    };
    field_ = new KeyCaptureView(capture_, translate, texts, "keyEditorPress", this);
    add_ = makeButton(texts, "keyEditorAdd", ButtonLook::quiet, this);
    reset_ = makeButton(texts, "keyEditorReset", ButtonLook::quiet, this);
    row->addWidget(keysBox_);
    row->addWidget(field_);
    row->addWidget(add_);
    row->addStretch(1);
    row->addWidget(reset_);
    column->addLayout(row);

    auto* question = new QHBoxLayout;
    conflict_ = new QLabel(this);
    conflict_->setObjectName("keyEditorConflict");
    conflict_->setTextFormat(Qt::PlainText);
    conflict_->setWordWrap(true);
    setLook(conflict_, LabelLook::warning);
    take_ = makeButton(texts, "keyEditorTake", ButtonLook::accented, this);
    leave_ = makeButton(texts, "keyEditorLeave", ButtonLook::quiet, this);
    question->addWidget(conflict_, 1);
    question->addWidget(leave_);
    question->addWidget(take_);
    column->addLayout(question);

    connect(add_, &QPushButton::clicked, this, &KeyEditor::record);
    connect(reset_, &QPushButton::clicked, this, [this] {
        if (command_)
            services_.commands.keys().reset(*command_);
    });
    connect(take_, &QPushButton::clicked, this, [this] { assign(true); });
    connect(leave_, &QPushButton::clicked, this, [this] {
        forget();
        add_->setFocus();
    });
    subscriptions_.push_back(capture_.isCapturing.observe([this](bool capturing) {
        if (!capturing)
            captureEnded();
    }));
    subscriptions_.push_back(services.commands.captionsChanged.observe([this] { showCommand(); }));
    followLanguage(this, texts, [this] { showCommand(); });
}

KeyEditor::~KeyEditor() = default;

void KeyEditor::show(std::optional<Command> command) {
    if (command == command_)
        return;
    command_ = command;
    forget();
    showCommand();
}

void KeyEditor::showCommand() {
    setVisible(command_.has_value());
    field_->setVisible(*capture_.isCapturing);
    add_->setVisible(!*capture_.isCapturing);
    if (!command_)
        return;
    const Texts& texts = services_.texts;
    name_->setText(qtext(services_.commands.name(*command_, texts)));
    help_->setText(qtext(texts.text(commandRow(*command_).helpKey)));
    reset_->setEnabled(services_.commands.keys().isChanged(*command_));
    if (asked_.empty())
        forget();
    else
        judge(asked_);
    showKeys();
}

void KeyEditor::showKeys() {
    const Texts& texts = services_.texts;
    while (QLayoutItem* item = keys_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();  // it may be the button that was pressed
        delete item;
    }
    if (const char* fixed = commandRow(*command_).fixedKey) {
        auto* label = new QLabel(qtext(texts.format("keyEditorFixed", {commandKeyCaption(fixed)})));
        label->setObjectName("keyEditorFixed");
        setLook(label, LabelLook::secondary);
        keys_->addWidget(label);
    }
    const auto own = services_.commands.keys().keys(*command_);
    for (const std::string& key : own) {
        const QString caption = qtext(commandKeyCaption(key));
        auto* remove = new QPushButton(QString(caption).replace('&', "&&"));
        remove->setIcon(theme::icon("window-close"));
        remove->setLayoutDirection(Qt::RightToLeft);  // the cross is behind the key
        nameControl(remove, "keyEditorRemove." + key,
                    qtext(texts.format("keyEditorRemove", {utf8Text(caption)})));
        remove->setToolTip(remove->accessibleName());
        connect(remove, &QPushButton::clicked, this, [this, key] {
            auto left = services_.commands.keys().keys(*command_);
            std::erase(left, key);
            add_->setFocus();
            services_.commands.keys().setKeys(*command_, left);
        });
        keys_->addWidget(remove);
    }
    keysBox_->setVisible(keys_->count() > 0);
}

void KeyEditor::record() {
    if (!command_)
        return;
    forget();
    capture_.setKeyString(std::nullopt);
    add_->hide();
    field_->QWidget::show();
    capture_.start();
}

void KeyEditor::captureEnded() {
    const std::string key = capture_.keyString->value_or("");
    const bool hadFocus = field_->hasFocus();
    add_->QWidget::show();
    field_->hide();
    if (hadFocus)
        add_->setFocus();
    if (!key.empty() && key != escape)
        judge(key);
    Q_EMIT recorded();
}

// Assigns the key if nothing stands against it, otherwise says what does.
void KeyEditor::judge(const std::string& key) {
    const auto found =
        keyConflicts(services_.commands.keys(), *services_.tagLibrary.active, *command_, key);
    const bool again = key == asked_;
    asked_ = key;
    if (found.none() && !again)
        return assign(false);
    showWarning(conflict_, conflictText(services_, key, found));
    const bool question = found.canBeTaken() && !found.none();
    take_->setVisible(question);
    leave_->setVisible(question);
    if (!question)
        asked_.clear();
    else if (!again)
        leave_->setFocus();
}

void KeyEditor::assign(bool take) {
    CommandKeys& keys = services_.commands.keys();
    const std::string key = asked_;
    const Command command = *command_;
    forget();
    add_->setFocus();
    if (take)
        for (const Command other : keys.conflicts(command, key)) {
            auto left = keys.keys(other);
            std::erase(left, canonicalHotkey(key));
            keys.setKeys(other, left);
        }
    auto own = keys.keys(command);
    if (std::find(own.begin(), own.end(), canonicalHotkey(key)) == own.end())
        own.push_back(key);
    keys.setKeys(command, own);
}

void KeyEditor::forget() {
    asked_.clear();
    showWarning(conflict_, {});
    take_->hide();
    leave_->hide();
}

}  // namespace tembrix
