#pragma once

#include <QWidget>
#include <vector>

class QToolButton;

namespace tembrix {

class FlowLayout;

// A titled section of the panel. Its buttons are laid out in rows, and its header folds it. Compact
// sections share rows: each adds its header and its buttons to the same layout.
class FoldSection final : public QWidget {
    Q_OBJECT
  public:
    // `shared` are the rows of a compact section, or null.
    FoldSection(const QString& objectName, const QString& title, FlowLayout* shared,
                QWidget* parent = nullptr);

    // The parent widget of the buttons.
    QWidget* body() const { return body_; }
    void add(QWidget* button);

    bool isExpanded() const { return expanded_; }
    void setExpanded(bool expanded);

  Q_SIGNALS:
    void headerPressed();

  private:
    QToolButton* header_;
    QWidget* body_;
    FlowLayout* flow_;
    bool compact_;
    std::vector<QWidget*> buttons_;
    bool expanded_ = true;
};

}  // namespace tembrix
