#pragma once

#include <QDialog>
#include <string>

class QHBoxLayout;
class QPushButton;

namespace tembrix {

// A short text with buttons at the lower right. The application's style sheet styles it by the
// property "look". Texts are shown without interpreting markup.
class MessagePanel final : public QDialog {
  public:
    MessagePanel(QWidget* parent, const char* name, const std::string& title,
                 const std::string& message);

    // Adds a button after the others. `name` is its object name.
    QPushButton* addButton(const char* name, const std::string& text, const char* look);

  private:
    QHBoxLayout* buttons_;
};

}  // namespace tembrix
