#pragma once

#include <QString>

#include "ports/texts.h"

#include "core/commands/command_table.h"
#include "core/commands/commands.h"

class QAbstractButton;
class QToolButton;

namespace tembrix {

// Lets a button run a command: it is enabled while the command is, shows whether the command is on
// if it can be, and its help names the key.
void bindButton(QAbstractButton* button, Commands& commands, Command command, const Texts& texts);

// An icon button for a command.
QToolButton* makeCommandButton(Commands& commands, Command command, const Texts& texts,
                               const QString& icon, QWidget* parent);

// "Undo (Ctrl+Z)".
QString commandHelp(const Commands& commands, Command command, const Texts& texts);

}  // namespace tembrix
