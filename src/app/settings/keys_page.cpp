#include "app/settings/keys_page.h"

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "ports/texts.h"

#include "app/settings/key_editor.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_focus.h"
#include "app/widgets/translated.h"
#include "core/collections/tag_library_manager.h"
#include "core/commands/command_keys.h"
#include "core/commands/commands.h"
#include "core/commands/key_conflicts.h"
#include "core/records/annotation_records.h"

namespace tembrix {

namespace {

constexpr int commandRole = Qt::UserRole;
constexpr int searchedRole = Qt::UserRole + 1;
enum Column { nameColumn, keysColumn, noteColumn };

}  // namespace

KeysPage::KeysPage(const SettingsServices& services, QWidget* parent)
    : QWidget(parent),
      services_(services),
      search_(new FocusAwareLineEdit(services.focus, this)),
      rows_(new QTreeWidget(this)),
      nothing_(makeLabel(services.texts, "commandFindCommandNothing", LabelLook::secondary, this)),
      editor_(new KeyEditor(services, this)) {
    const Texts& texts = services.texts;
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::margin);
    nameControl(search_, texts, "settingsKeysSearch");
    showText(search_, texts, "settingsKeysSearch", &QLineEdit::placeholderText,
             &QLineEdit::setPlaceholderText);
    search_->setClearButtonEnabled(true);
    column->addWidget(search_);

    nameControl(rows_, texts, "settingsKeysList");
    tellRows(rows_);
    rows_->setColumnCount(3);
    rows_->setRootIsDecorated(false);
    rows_->setItemsExpandable(false);
    rows_->setUniformRowHeights(true);
    rows_->setIndentation(theme::margin);
    rows_->setMinimumHeight(200);
    rows_->setStyleSheet("QTreeView::item { padding: 3px 4px; }");
    rows_->header()->setStretchLastSection(true);
    column->addWidget(rows_, 1);
    column->addWidget(nothing_);
    column->addWidget(editor_);

    makeRows();
    connect(search_, &QLineEdit::textChanged, this, &KeysPage::filter);
    connect(rows_, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* row) {
        const QVariant command = row ? row->data(nameColumn, commandRole) : QVariant();
        editor_->show(command.isValid() ? std::optional(static_cast<Command>(command.toInt()))
                                        : std::nullopt);
    });
    connect(rows_, &QTreeWidget::itemActivated, editor_, &KeyEditor::record);
    followLanguage(this, texts, [this] { showRows(); });
    subscriptions_.push_back(services.commands.captionsChanged.observe([this] { showRows(); }));
    subscriptions_.push_back(
        services.tagLibrary.active.observe([this](const CollectionLists&) { showRows(); }));
    rows_->setCurrentItem(rows_->topLevelItem(0)->child(0));
}

void KeysPage::makeRows() {
    QTreeWidgetItem* menu = nullptr;
    const char* title = nullptr;
    for (const CommandRow& row : commandTable()) {
        if (const char* of = menuTextKey(row.menu); of != title) {
            title = of;
            menu = new QTreeWidgetItem(rows_);
            menu->setData(nameColumn, searchedRole, QString::fromLatin1(title));
            menu->setFont(nameColumn, theme::font(theme::textSize, QFont::DemiBold));
            menu->setFlags(Qt::ItemIsEnabled);
            menu->setFirstColumnSpanned(true);
        }
        auto* item = new QTreeWidgetItem(menu);
        item->setData(nameColumn, commandRole, static_cast<int>(row.id));
    }
    rows_->expandAll();
}

void KeysPage::showRows() {
    const Texts& texts = services_.texts;
    rows_->setHeaderLabels({qtext(texts.text("settingsKeysCommand")),
                            qtext(texts.text("settingsKeysKeys")),
                            qtext(texts.text("settingsKeysNote"))});
    for (int i = 0; i < rows_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* menu = rows_->topLevelItem(i);
        menu->setText(nameColumn,
                      qtext(texts.text(utf8Text(menu->data(nameColumn, searchedRole).toString()))));
        for (int j = 0; j < menu->childCount(); ++j)
            showRow(menu->child(j),
                    static_cast<Command>(menu->child(j)->data(nameColumn, commandRole).toInt()));
    }
    // As wide as the widest row, also while a search hides it.
    const QFontMetrics letters(theme::font(theme::textSize, QFont::DemiBold));
    for (const int column : {nameColumn, keysColumn}) {
        int widest = 0;
        for (int i = 0; i < rows_->topLevelItemCount(); ++i)
            for (int j = 0; j < rows_->topLevelItem(i)->childCount(); ++j)
                widest = std::max(widest, letters.horizontalAdvance(
                                              rows_->topLevelItem(i)->child(j)->text(column)));
        rows_->setColumnWidth(column, widest + 3 * theme::margin);
    }
    filter();
}

void KeysPage::showRow(QTreeWidgetItem* row, Command command) {
    const Texts& texts = services_.texts;
    const CommandKeys& keys = services_.commands.keys();
    const CommandRow& known = commandRow(command);
    QStringList captions;
    if (known.fixedKey)
        captions << qtext(texts.format("keyEditorFixed", {commandKeyCaption(known.fixedKey)}));
    QString note;
    for (const std::string& key : keys.keys(command)) {
        captions << qtext(commandKeyCaption(key));
        if (const auto found = keyConflicts(keys, *services_.tagLibrary.active, command, key);
            note.isEmpty() && !found.none())
            note = conflictText(services_, key, found);
    }
    const QString name = qtext(services_.commands.name(command, texts));
    row->setText(nameColumn, name);
    row->setText(keysColumn, captions.join(", "));
    row->setText(noteColumn, note);
    row->setToolTip(noteColumn, note);
    row->setToolTip(nameColumn, qtext(texts.text(known.helpKey)));
    row->setForeground(noteColumn, theme::warning);
    row->setFont(keysColumn, theme::font(theme::textSize, keys.isChanged(command) ? QFont::DemiBold
                                                                                  : QFont::Normal));
    row->setData(nameColumn, searchedRole, name + ' ' + row->text(keysColumn));
    row->setData(nameColumn, Qt::AccessibleTextRole, QVariant());
}

void KeysPage::filter() {
    const QStringList words = search_->text().split(' ', Qt::SkipEmptyParts);
    bool any = false;
    for (int i = 0; i < rows_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* menu = rows_->topLevelItem(i);
        bool inMenu = false;
        for (int j = 0; j < menu->childCount(); ++j) {
            QTreeWidgetItem* row = menu->child(j);
            const QString searched =
                row->data(nameColumn, searchedRole).toString() + ' ' + menu->text(nameColumn);
            const bool found = std::all_of(words.begin(), words.end(), [&](const QString& word) {
                return searched.contains(word, Qt::CaseInsensitive);
            });
            row->setHidden(!found);
            inMenu |= found;
            if (found && !chosen())
                rows_->setCurrentItem(row);
        }
        menu->setHidden(!inMenu);
        any |= inMenu;
    }
    rows_->setVisible(any);
    editor_->setEnabled(any);
    nothing_->setVisible(!any);
}

QTreeWidgetItem* KeysPage::chosen() const {
    QTreeWidgetItem* row = rows_->currentItem();
    return row && !row->isHidden() ? row : nullptr;
}

}  // namespace tembrix
