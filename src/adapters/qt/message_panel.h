#pragma once

#include <QDialog>
#include <string>

class QHBoxLayout;
class QPushButton;

namespace tembrix {

// A short text with its buttons at the lower right. Takes its looks from the application's style
// sheet by the property "look". Texts are shown as they are, without markup.
class MessagePanel final : public QDialog {
  public:
    MessagePanel(QWidget* parent, const char* name, const std::string& title,
                 const std::string& message);

    // In reading order. The name is the button's object name.
    QPushButton* addButton(const char* name, const std::string& text, const char* look);

  private:
    QHBoxLayout* buttons_;
};

}  // namespace tembrix
