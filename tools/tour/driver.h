#pragma once

#include <QDialog>
#include <QString>
#include <QWidget>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace tembrix::tour {

// A step of the tour has failed; the text contains the step and the reason.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Drives the real windows like a user: sends keys to the focused widget and clicks to visible
// controls, and processes events while waiting. Controls are found by their object names.
class Driver {
  public:
    explicit Driver(std::filesystem::path output);

    void say(const QString& text) const;

    // Processes events until the condition is true; fails after `seconds`.
    void waitFor(const QString& what, const std::function<bool()>& condition,
                 double seconds = 15) const;
    void pause(double seconds) const;

    // Waits for the visible control with this name and returns it.
    QWidget* control(const QString& name) const;
    bool isVisible(const QString& name) const;
    void waitGone(const QString& name) const;

    void click(const QString& name) const;
    void clickAt(QWidget* widget, const QPoint& place) const;
    void drag(QWidget* widget, const QPoint& from, const QPoint& to,
              const std::function<void()>& halfWay = {}) const;
    void key(int key, Qt::KeyboardModifiers modifiers = {}) const;
    void type(const QString& text) const;
    // Opens the menu of a button by keyboard and chooses the entry with this name.
    void choose(const QString& button, const QString& entry) const;
    // Opens the context menu of the focused widget or at a position; chooseEntry() closes it.
    void openMenu() const;
    void openMenuAt(QWidget* widget, const QPoint& place) const;
    void chooseEntry(const QString& entry) const;  // chooses from the open menu by keyboard
    void hover(QWidget* widget, const QPoint& place) const;
    QDialog* sheet() const;  // waits for the sheet with the focus and returns it
    void noSheet() const;    // waits until there is none
    QWidget* window(const QString& name) const;  // a top-level window
    void activate(const QString& window) const;

    // Saves a picture of one window or of the whole screen in the output folder.
    void picture(const QString& name, QWidget* window) const;
    void screen(const QString& name) const;

    const std::filesystem::path& output() const { return output_; }

  private:
    QWidget* find(const QString& name) const;

    std::filesystem::path output_;
    mutable int pictures_ = 0;
};

}  // namespace tembrix::tour
