#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <vector>

#include "base/signal.h"

#include "ports/texts.h"

#include "core/commands/commands.h"

namespace tembrix {

class FocusStateManager;

// Binds the commands that work in every window: the walk through the windows, menus by keyboard,
// the search for commands, the list of keys, and quitting. Lives as long as the program.
class ShellCommands {
  public:
    // `windows` returns the program's windows in the order in which they are walked through.
    using Windows = std::function<std::vector<QWidget*>()>;

    ShellCommands(Commands& commands, FocusStateManager& focus, const Texts& texts,
                  Windows windows);

  private:
    void walk(int step);
    void find();
    void showKeys();

    Commands& commands_;
    FocusStateManager& focus_;
    const Texts& texts_;
    Windows windows_;
    std::vector<Subscription> subscriptions_;
    QPointer<QWidget> asked_;  // the target of a walk while the focus has not moved since
    QObject focusObserver_;
};

// Ends sheets and panels, then the program. Never asks, and nothing can refuse.
void quitProgram();

}  // namespace tembrix
