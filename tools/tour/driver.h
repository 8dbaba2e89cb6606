#pragma once

#include <QDialog>
#include <QString>
#include <QWidget>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace tembrix::tour {

// A step of the tour did not come to its end; the text says which and why.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Drives the real windows as a user does: keys go to whatever has the keyboard, clicks to visible
// controls, and every wait lets the program run. Controls are found by their object names.
class Driver {
  public:
    explicit Driver(std::filesystem::path output);

    void say(const QString& text) const;

    // Lets the program run until the condition holds; fails after `seconds`.
    void waitFor(const QString& what, const std::function<bool()>& condition,
                 double seconds = 15) const;
    void pause(double seconds) const;

    // The visible control of this name; waits for it.
    QWidget* control(const QString& name) const;
    bool isVisible(const QString& name) const;
    void waitGone(const QString& name) const;

    void click(const QString& name) const;
    void clickAt(QWidget* widget, const QPoint& place) const;
    void drag(QWidget* widget, const QPoint& from, const QPoint& to,
              const std::function<void()>& halfWay = {}) const;
    void key(int key, Qt::KeyboardModifiers modifiers = {}) const;
    void type(const QString& text) const;
    // Opens the menu of a button by keyboard and chooses an entry by its name.
    void choose(const QString& button, const QString& entry) const;
    // Asks for the menu of what has the keyboard, or of a place; chooseEntry() ends it.
    void openMenu() const;
    void openMenuAt(QWidget* widget, const QPoint& place) const;
    void chooseEntry(const QString& entry) const;  // of the open menu, by keyboard
    void hover(QWidget* widget, const QPoint& place) const;
    QDialog* sheet() const;                      // the sheet that has the keyboard; waits for it
    void noSheet() const;                        // waits until there is none
    QWidget* window(const QString& name) const;  // a top-level window
    void activate(const QString& window) const;

    // A picture of one window, or of the whole screen, in the output folder.
    void picture(const QString& name, QWidget* window) const;
    void screen(const QString& name) const;

    const std::filesystem::path& output() const { return output_; }

  private:
    QWidget* find(const QString& name) const;

    std::filesystem::path output_;
    mutable int pictures_ = 0;
};

}  // namespace tembrix::tour
