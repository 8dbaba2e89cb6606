#pragma once

#include <QLineEdit>

namespace tembrix {

class FocusStateManager;

// Blocks hot keys while a text widget has the focus, so that they do not interfere with typing.
// Owned by the widget.
class TextFocusTracker final : public QObject {
    Q_OBJECT
  public:
    TextFocusTracker(QWidget* field, FocusStateManager& focus);
    ~TextFocusTracker() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void setFocused(bool focused);

    FocusStateManager& focus_;
    bool focused_ = false;
};

// The text field of the program. Every field into which the user types is of this class.
class FocusAwareLineEdit final : public QLineEdit {
    Q_OBJECT
  public:
    explicit FocusAwareLineEdit(FocusStateManager& focus, QWidget* parent = nullptr);
};

}  // namespace tembrix
