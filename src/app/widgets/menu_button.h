#pragma once

#include <QToolButton>

namespace tembrix {

// A button with a menu, which the arrow down opens as well.
class MenuButton final : public QToolButton {
    Q_OBJECT
  public:
    explicit MenuButton(QWidget* parent = nullptr);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace tembrix
