#pragma once

#include <QObject>

class QMenuBar;
class QWidget;

namespace tembrix {

class Texts;

// The program's one menu with its one item, quit.
QMenuBar* makeMainMenu(const Texts& texts, QWidget* parent);

// Makes the quit key work in every window, sheet and panel, whichever has the keyboard. A modal
// sheet would otherwise keep the menu's key from the menu.
class QuitKeys final : public QObject {
  public:
    explicit QuitKeys(const Texts& texts);
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    const Texts& texts_;
};

// Ends sheets and panels, then the program. Never asks, and nothing can refuse.
void quitProgram();

}  // namespace tembrix
