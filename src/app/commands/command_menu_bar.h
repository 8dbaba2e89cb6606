#pragma once

#include <QKeySequence>
#include <QMenuBar>
#include <utility>
#include <vector>

#include "base/signal.h"

#include "ports/texts.h"

#include "core/commands/command_table.h"
#include "core/commands/commands.h"

namespace tembrix {

// The menu bar of a window, made from the command table. Entries show their keys, but the keys
// themselves are handled by the key router, so that they work on every keyboard layout. The state
// of the entries is that of the moment at which a menu opens: nothing is done for them with each
// mark.
class CommandMenuBar final : public QMenuBar {
    Q_OBJECT
  public:
    // `window` is the scope of the window: list, project, or everywhere for a window with only the
    // general commands.
    CommandMenuBar(Commands& commands, const Texts& texts, CommandScope window,
                   QWidget* parent = nullptr);

    CommandScope scope() const { return window_; }
    void openFirst();  // by keyboard

    // The menu bar of a top-level window; null without one.
    static CommandMenuBar* of(const QWidget* window);

  private:
    void showNames();
    void showState();

    Commands& commands_;
    const Texts& texts_;
    const CommandScope window_;
    std::vector<std::pair<QAction*, Command>> actions_;  // by menu
    bool isStale_ = false;
    Subscription captionsChanged_;
    Subscription changed_;
};

// The text with an ampersand before its mnemonic: a letter that none of `taken` uses, the first of
// a word if possible. Adds the letter to `taken`.
QString withMnemonic(const QString& text, QString& taken);

}  // namespace tembrix
