#pragma once

#include <QObject>

class QMenuBar;
class QWidget;

namespace tembrix {

class Texts;

// The main menu of the program. Its only item is Quit.
QMenuBar* makeMainMenu(const Texts& texts, QWidget* parent);

// Handles the quit shortcut in every window, sheet and panel. A modal sheet would otherwise block
// the menu's shortcut.
class QuitKeys final : public QObject {
  public:
    explicit QuitKeys(const Texts& texts);
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    const Texts& texts_;
};

// Closes all sheets and panels and exits the program without asking.
void quitProgram();

}  // namespace tembrix
