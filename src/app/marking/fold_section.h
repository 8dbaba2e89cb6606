#pragma once

#include <QWidget>

class QToolButton;

namespace tembrix {

class FlowLayout;

// A titled section of the panel. Its buttons are laid out in rows, and its header folds it.
class FoldSection final : public QWidget {
    Q_OBJECT
  public:
    FoldSection(const QString& objectName, const QString& title, QWidget* parent = nullptr);

    // The parent widget of the buttons, and the layout that they are added to.
    QWidget* body() const { return body_; }
    FlowLayout* flow() const { return flow_; }

    bool isExpanded() const;
    void setExpanded(bool expanded);

  Q_SIGNALS:
    void headerPressed();

  private:
    QToolButton* header_;
    QWidget* body_;
    FlowLayout* flow_;
};

}  // namespace tembrix
