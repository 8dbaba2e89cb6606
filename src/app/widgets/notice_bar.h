#pragma once

#include <QFrame>
#include <functional>
#include <string_view>

#include "ports/texts.h"

class QHBoxLayout;
class QPushButton;

namespace tembrix {

class ElidedLabel;

// A message in a window about something that has happened, with buttons for what can be done now.
// It stays until the user hides it or its owner does, and never takes the focus.
class NoticeBar : public QFrame {
    Q_OBJECT
  public:
    // `dismissKey` is the text of the button that hides the bar. Initially hidden.
    NoticeBar(const Texts& texts, std::string_view name, std::string_view dismissKey,
              QWidget* parent = nullptr);

    void addButton(QPushButton* button);  // left of the one that hides the bar
    // Shows the bar with the message, which is made again in a new language.
    void say(std::function<QString()> message);

  Q_SIGNALS:
    void hiddenByUser();

  private:
    void showMessage();

    QHBoxLayout* row_;
    ElidedLabel* label_;
    std::function<QString()> message_;
};

}  // namespace tembrix
