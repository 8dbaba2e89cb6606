#pragma once

#include <QWidget>

class QToolButton;

namespace tembrix {

class FlowLayout;

// A titled section of the panel. Its buttons are laid out in rows, and its header folds it. In a
// compact section the header is in the first row.
class FoldSection final : public QWidget {
    Q_OBJECT
  public:
    FoldSection(const QString& objectName, const QString& title, bool compact,
                QWidget* parent = nullptr);

    // The parent widget of the buttons, and the layout that they are added to.
    QWidget* body() const { return body_; }
    FlowLayout* flow() const { return flow_; }

    bool isExpanded() const { return expanded_; }
    void setExpanded(bool expanded);

  Q_SIGNALS:
    void headerPressed();

  private:
    QToolButton* header_;
    QWidget* body_;
    FlowLayout* flow_;
    bool compact_;
    bool expanded_ = true;
};

}  // namespace tembrix
