#pragma once

#include <QWidget>
#include <string_view>

class QGridLayout;
class QLabel;

namespace tembrix {

class Texts;

// The rows of a settings page: a name at the left, its control at the right, and below the control
// a hint.
class SettingsForm final : public QWidget {
    Q_OBJECT
  public:
    SettingsForm(const Texts& texts, QWidget* parent);

    // Names the control by the text of the key and adds it. Without a hint if its key is empty.
    void addRow(std::string_view key, QWidget* control, std::string_view hintKey = {});
    // A check box, which has its name beside it.
    void addCheck(QWidget* box, std::string_view hintKey = {});
    // A warning below the last row, hidden while it is empty.
    QLabel* addWarning(std::string_view objectName);
    void addGap();

  private:
    void addHint(std::string_view key);

    const Texts& texts_;
    QGridLayout* grid_;
    int rows_ = 0;
};

// Shows the text, or nothing.
void showWarning(QLabel* label, const QString& text);

}  // namespace tembrix
