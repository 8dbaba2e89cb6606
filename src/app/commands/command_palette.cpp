#include "app/commands/command_palette.h"

#include <QKeyEvent>
#include <QLabel>
#include <QTimer>
#include <QTreeWidget>
#include <algorithm>

#include "app/commands/command_rows.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_focus.h"
#include "core/keyboard/text_focus.h"

namespace tembrix {

namespace {

constexpr int commandRole = Qt::UserRole;
constexpr int searchedRole = Qt::UserRole + 1;

bool isChoosable(const QTreeWidgetItem* row) {
    return row && !row->isHidden() && row->flags().testFlag(Qt::ItemIsEnabled);
}

}  // namespace

CommandPalette::CommandPalette(QWidget* window, Commands& commands, CommandScope scope,
                               const Texts& texts, FocusStateManager& focus)
    : Sheet(window, texts, "commandFindCommand"),
      commands_(commands),
      search_(new FocusAwareLineEdit(focus, this)),
      rows_(makeCommandRows(texts, "commandFindCommandList")),
      nothing_(makeLabel(texts, "commandFindCommandNothing", LabelLook::secondary, this)) {
    nameControl(search_, texts, "commandFindCommandSearch");
    search_->setPlaceholderText(search_->accessibleName());
    search_->installEventFilter(this);
    tellRows(rows_);
    content()->addWidget(search_);
    content()->addWidget(rows_, 1);
    content()->addWidget(nothing_);
    addCancelButton("cancelButtonTitle");
    addRows(scope);
    filter({});
    connect(search_, &QLineEdit::textChanged, this, &CommandPalette::filter);
    connect(rows_, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem* row) { choose(row); });
    connect(rows_, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* row) { choose(row); });
    search_->setFocus();
}

void CommandPalette::addRows(CommandScope scope) {
    for (const CommandRow& row : commandTable()) {
        // The search itself and what only serves the focused control make no sense here.
        if (!isOffered(row, scope) || row.id == Command::findCommand ||
            row.id == Command::contextMenu || row.id == Command::openMenu)
            continue;
        const QString name = qtext(commands_.name(row.id, texts()));
        const QString menu = qtext(texts().text(menuTextKey(row.menu)));
        const QString help = qtext(texts().text(row.helpKey));
        auto* item = new QTreeWidgetItem(
            rows_, {menu + "  ›  " + name, qtext(commands_.keys().caption(row.id))});
        item->setToolTip(0, help);
        item->setData(0, Qt::AccessibleDescriptionRole, help);
        item->setData(0, commandRole, static_cast<int>(row.id));
        item->setData(0, searchedRole, name + ' ' + menu + ' ' + help);
        if (!commands_.isEnabled(row.id))
            item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
    }
}

void CommandPalette::filter(const QString& text) {
    const QStringList words = text.split(' ', Qt::SkipEmptyParts);
    QTreeWidgetItem* first = nullptr;
    bool any = false;
    for (int i = 0; i < rows_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = rows_->topLevelItem(i);
        const QString searched = row->data(0, searchedRole).toString();
        const bool found = std::all_of(words.begin(), words.end(), [&](const QString& word) {
            return searched.contains(word, Qt::CaseInsensitive);
        });
        row->setHidden(!found);
        any |= found;
        if (!first && isChoosable(row))
            first = row;
    }
    rows_->setCurrentItem(first);
    rows_->setVisible(any);
    nothing_->setVisible(!any);
}

void CommandPalette::choose(const QTreeWidgetItem* row) {
    if (!isChoosable(row))
        return;
    const auto command = static_cast<Command>(row->data(0, commandRole).toInt());
    // The command runs after the sheet is closed, with the focus back in the window.
    QTimer::singleShot(0, parentWidget(),
                       [&commands = commands_, command] { commands.run(command); });
    accept();
}

bool CommandPalette::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return Sheet::eventFilter(watched, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            QCoreApplication::sendEvent(rows_, event);
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            choose(rows_->currentItem());
            return true;
        default:
            return Sheet::eventFilter(watched, event);
    }
}

}  // namespace tembrix
