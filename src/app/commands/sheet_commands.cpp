#include "app/commands/sheet_commands.h"

#include <QApplication>
#include <QDialog>
#include <algorithm>
#include <utility>

namespace tembrix {

SheetCommands::SheetCommands(Commands& commands, const QWidget& view)
    : commands_(commands), view_(view) {
    // A sheet that opens or closes moves the focus.
    QObject::connect(
        qApp, &QGuiApplication::focusWindowChanged, &focusObserver_,
        [this] { commands_.refresh(); }, Qt::QueuedConnection);
}

Subscription SheetCommands::bind(Command command, Commands::Action action) const {
    action.enabled = [this, enabled = std::move(action.enabled)] {
        return !areBlocked() && (!enabled || enabled());
    };
    return commands_.bind(command, std::move(action));
}

bool SheetCommands::areBlocked() const {
    const auto tops = QApplication::topLevelWidgets();
    return std::any_of(tops.begin(), tops.end(), [this](const QWidget* top) {
        if (!top->isVisible() || !qobject_cast<const QDialog*>(top))
            return false;
        while (top->parentWidget())
            top = top->parentWidget()->window();
        return top == view_.window();
    });
}

}  // namespace tembrix
