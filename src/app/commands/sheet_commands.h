#pragma once

#include <QObject>

#include "base/signal.h"

#include "core/commands/command_table.h"
#include "core/commands/commands.h"

class QWidget;

namespace tembrix {

// Binds the commands that open a sheet on the window of a view. While that window has a sheet or a
// panel, they are disabled in all windows: the sheet blocks its own window only, and a second one
// over it would answer for the first.
class SheetCommands {
  public:
    SheetCommands(Commands& commands, const QWidget& view);

    Subscription bind(Command command, Commands::Action action) const;
    bool areBlocked() const;  // the window has a sheet

  private:
    Commands& commands_;
    const QWidget& view_;
    QObject focusObserver_;
};

}  // namespace tembrix
