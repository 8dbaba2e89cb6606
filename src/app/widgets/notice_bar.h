#pragma once

#include <QFrame>
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
    void say(const QString& message);     // shows the bar

  Q_SIGNALS:
    void hiddenByUser();

  private:
    QHBoxLayout* row_;
    ElidedLabel* message_;
};

}  // namespace tembrix
