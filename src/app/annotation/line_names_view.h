#pragma once

#include <QListView>

#include "app/annotation/line_names_model.h"

namespace tembrix {

// The name column beside the rows: click or Enter selects a line, dragging or Alt with the arrows
// moves it, the context menu renames and deletes it.
class LineNamesView final : public QListView {
    Q_OBJECT
  public:
    LineNamesView(TimelineEditingModel& model, LineNamesModel& names, const Texts& texts,
                  QWidget* parent = nullptr);

    std::optional<Uuid> currentLine() const { return names_.lineAt(currentIndex()); }

  Q_SIGNALS:
    void lineMenuRequested(const tembrix::Uuid& line, const QPoint& globalPosition);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    void moveCurrent(int step);

    TimelineEditingModel& model_;
    LineNamesModel& names_;
    std::optional<Uuid> kept_;  // the current line while the rows are replaced
};

}  // namespace tembrix
