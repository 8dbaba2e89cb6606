#include "app/shell/shell_commands.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <algorithm>
#include <utility>

#include "app/commands/command_menu_bar.h"
#include "app/commands/command_palette.h"
#include "app/commands/keys_sheet.h"
#include "app/shell/joined_windows.h"
#include "core/commands/command_table.h"
#include "core/keyboard/text_focus.h"

namespace tembrix {

namespace {

void openContextMenu() {
    // The toolkit handles the menu key alone, which many keyboards lack.
    QWidget* focus = QApplication::focusWidget();
    if (!focus)
        return;
    const QPoint middle = focus->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, middle, focus->mapToGlobal(middle));
    QApplication::sendEvent(focus, &event);
}

}  // namespace

ShellCommands::ShellCommands(Commands& commands, FocusStateManager& focus, const Texts& texts,
                             Windows windows)
    : commands_(commands), focus_(focus), texts_(texts), windows_(std::move(windows)) {
    const auto bind = [&](Command command, std::function<void()> run) {
        subscriptions_.push_back(commands.bind(command, {std::move(run), {}, {}}));
    };
    QObject::connect(qApp, &QApplication::focusChanged, &focusObserver_,
                     [this] { asked_.clear(); });
    bind(Command::quit, &quitProgram);
    bind(Command::nextWindow, [this] { walk(+1); });
    bind(Command::previousWindow, [this] { walk(-1); });
    bind(Command::openMenu, [] {
        if (CommandMenuBar* menus = CommandMenuBar::of(QApplication::activeWindow()))
            menus->openFirst();
    });
    bind(Command::contextMenu, &openContextMenu);
    bind(Command::findCommand, [this] { find(); });
    bind(Command::showKeys, [this] { showKeys(); });
}

void ShellCommands::walk(int step) {
    const auto windows = windows_();
    if (windows.empty())
        return;
    const auto count = static_cast<int>(windows.size());
    // Some displays refuse to activate a window. The next press goes past it.
    const auto active = std::find_if(windows.begin(), windows.end(), [this](const QWidget* window) {
        return asked_ ? window == asked_ : hasKeyboard(*window);
    });
    const int from = active == windows.end() ? (step > 0 ? count - 1 : 0)
                                             : static_cast<int>(active - windows.begin());
    QWidget* next = windows[static_cast<std::size_t>((from + step + count) % count)];
    asked_ = next;
    bringForward(*next);
}

void ShellCommands::find() {
    QWidget* window = QApplication::activeWindow();
    if (const CommandMenuBar* menus = CommandMenuBar::of(window))
        (new CommandPalette(window, commands_, menus->scope(), texts_, focus_))->present();
}

void ShellCommands::showKeys() {
    QWidget* window = QApplication::activeWindow();
    if (const CommandMenuBar* menus = CommandMenuBar::of(window))
        (new KeysSheet(window, commands_, menus->scope(), texts_))->present();
}

void quitProgram() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QDialog*>(window); dialog && dialog->isVisible())
            dialog->reject();
    }
    // Not quit(), which asks each window to close: a sheet at work or an open editor refuses.
    QApplication::exit();
}

}  // namespace tembrix
