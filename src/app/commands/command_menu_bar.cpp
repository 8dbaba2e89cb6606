#include "app/commands/command_menu_bar.h"

#include <QAction>
#include <QMenu>
#include <QTimer>
#include <QToolButton>

#include "app/theme/theme.h"
#include "app/widgets/announcements.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

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
    showText(this, texts, "menuBar", &QWidget::accessibleName, &QWidget::setAccessibleName);
    QMenu* menu = nullptr;
    for (const CommandRow& row : commandTable()) {
        if (!isOffered(row, window))
            continue;
        if (const char* title = menuTextKey(row.menu); !menu || menu->objectName() != title) {
            menu = addMenu(QString());
            menu->setObjectName(title);
            showText(menu, texts, title, &QWidget::accessibleName, &QWidget::setAccessibleName);
            connect(menu, &QMenu::aboutToShow, this, &CommandMenuBar::showState);
        } else if (row.startsGroup) {
            menu->addSeparator();
        }
        QAction* action = menu->addAction(QString());
        action->setObjectName(row.name);
        action->setMenuRole(row.id == Command::quit ? QAction::QuitRole : QAction::NoRole);
        // Only shown: the shortcut of a widget that never has the focus is never triggered.
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this,
                [this, command = row.id] { commands_.run(command); });
        actions_.emplace_back(action, row.id);
    }
    // The toolkit's arrow to the menus that do not fit is black.
    if (auto* more = findChild<QToolButton*>("qt_menubar_ext_button"))
        more->setIcon(theme::icon("arrow-down"));
    followLanguage(this, texts, [this] { showNames(); });
    captionsChanged_ = commands_.captionsChanged.observe([this] { showNames(); });
    showState();
    // Assistive programs read the entries of closed menus.
    changed_ = commands.changed.observe([this] {
        if (announcementsAreHeard() && !isStale_) {
            isStale_ = true;
            QTimer::singleShot(0, this, &CommandMenuBar::showState);
        }
    });
}

void CommandMenuBar::showNames() {
    QString titles, entries;
    const QMenu* menu = nullptr;
    for (const auto& [action, command] : actions_) {
        auto* in = qobject_cast<QMenu*>(action->parent());
        if (in != menu) {
            menu = in;
            entries.clear();
            in->setTitle(withMnemonic(in->accessibleName(), titles));
        }
        action->setText(withMnemonic(qtext(commands_.name(command, texts_)), entries));
        action->setStatusTip(qtext(texts_.text(commandRow(command).helpKey)));
        action->setToolTip(action->statusTip());
    }
}

void CommandMenuBar::showState() {
    isStale_ = false;
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
