#pragma once

#include <QLineEdit>

namespace tembrix {

struct FocusStateManager;

// Tells the hot keys while a widget that takes text has the keyboard, so that typing stays typing.
// Lives and dies with the widget.
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

// The program's text field. Every field into which the user types is one of these.
class FocusAwareLineEdit final : public QLineEdit {
    Q_OBJECT
  public:
    explicit FocusAwareLineEdit(FocusStateManager& focus, QWidget* parent = nullptr);
};

}  // namespace tembrix
