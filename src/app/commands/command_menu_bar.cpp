#include "app/commands/command_menu_bar.h"

#include <QAction>
#include <QMenu>

#include "app/widgets/qt_text.h"

namespace tembrix {

namespace {

QKeySequence shownKey(const std::string& caption) {
    QString text = qtext(caption);
    text.replace("←", "Left").replace("→", "Right").replace("↑", "Up").replace("↓", "Down");
    return QKeySequence::fromString(text);
}

}  // namespace

QString withMnemonic(const QString& text, QString& taken) {
    QString plain = text;
    plain.replace('&', "&&");
    const auto mark = [&](qsizetype at) {
        taken.append(plain[at].toLower());
        return plain.left(at) + '&' + plain.mid(at);
    };
    const auto isFree = [&](qsizetype at) {
        return plain[at].isLetter() && !taken.contains(plain[at].toLower());
    };
    for (qsizetype at = 0; at < plain.size(); ++at)
        if ((at == 0 || plain[at - 1].isSpace()) && isFree(at))
            return mark(at);
    for (qsizetype at = 0; at < plain.size(); ++at)
        if (isFree(at))
            return mark(at);
    return plain;
}

CommandMenuBar::CommandMenuBar(Commands& commands, const Texts& texts, CommandScope window,
                               QWidget* parent)
    : QMenuBar(parent), commands_(commands), texts_(texts), window_(window) {
    setObjectName("commandMenuBar");
    setAccessibleName(qtext(texts.text("menuBar")));
    QString titles;
    QMenu* menu = nullptr;
    const char* title = nullptr;
    QString entries;
    for (const CommandRow& row : commandTable()) {
        if (!isOffered(row, window))
            continue;
        const char* rowTitle = menuTextKey(row.menu);
        if (rowTitle != title) {
            title = rowTitle;
            entries.clear();
            menu = addMenu(withMnemonic(qtext(texts.text(title)), titles));
            menu->setObjectName(title);
            menu->setAccessibleName(qtext(texts.text(title)));
            connect(menu, &QMenu::aboutToShow, this, &CommandMenuBar::showState);
        } else if (row.startsGroup) {
            menu->addSeparator();
        }
        QAction* action = menu->addAction(withMnemonic(qtext(texts.text(row.textKey)), entries));
        action->setObjectName(row.name);
        action->setStatusTip(qtext(texts.text(row.helpKey)));
        action->setToolTip(action->statusTip());
        action->setMenuRole(row.id == Command::quit ? QAction::QuitRole : QAction::NoRole);
        // Only shown: the shortcut of a widget that never has the focus is never triggered.
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this,
                [this, command = row.id] { commands_.run(command); });
        actions_.emplace_back(action, row.id);
    }
    showState();
}

void CommandMenuBar::showState() {
    for (const auto& [action, command] : actions_) {
        action->setEnabled(commands_.isEnabled(command));
        const auto checked = commands_.isChecked(command);
        action->setCheckable(checked.has_value());
        action->setChecked(checked.value_or(false));
        action->setShortcut(shownKey(commands_.keys().caption(command)));
    }
}

void CommandMenuBar::openFirst() {
    setFocus(Qt::MenuBarFocusReason);
    setActiveAction(actions().first());
}

CommandMenuBar* CommandMenuBar::of(const QWidget* window) {
    return window ? window->findChild<CommandMenuBar*>(QString(), Qt::FindDirectChildrenOnly)
                  : nullptr;
}

}  // namespace tembrix
