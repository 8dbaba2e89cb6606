#pragma once

class QMenuBar;
class QWidget;

namespace tembrix {

class Texts;

// The program's one menu with its one item, quit. Quitting ends sheets and panels first and never
// asks.
QMenuBar* makeMainMenu(const Texts& texts, QWidget* parent);

// Makes the quit key work in a window that has no menu of its own.
void addQuitKey(const Texts& texts, QWidget* window);

void quitProgram();

}  // namespace tembrix
