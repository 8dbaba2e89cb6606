#pragma once

#include <QWidget>

class QToolButton;

namespace tembrix {

class FlowLayout;

// A titled part of the panel whose buttons flow in rows; its header folds it.
class FoldSection final : public QWidget {
    Q_OBJECT
  public:
    FoldSection(const QString& objectName, const QString& title, QWidget* parent = nullptr);

    // The owner of the buttons, and where to put them.
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
