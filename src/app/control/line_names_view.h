#pragma once

#include <QDrag>
#include <QListView>
#include <QPointer>

#include "base/uuid.h"

#include "ports/texts.h"

#include "app/control/line_names_model.h"
#include "core/control/timeline_editing_model.h"

namespace tembrix {

// The name column beside the rows. A click or Enter selects a line, dragging it or Alt with an
// arrow key moves it, F2 renames it, and the context menu renames and deletes it. A bar shows where
// a dragged line would be inserted.
class LineNamesView final : public QListView {
    Q_OBJECT
  public:
    LineNamesView(TimelineEditingModel& model, LineNamesModel& names, const Texts& texts,
                  QWidget* parent = nullptr);
    ~LineNamesView() override;

    std::optional<Uuid> currentLine() const { return names_.lineAt(currentIndex()); }

  Q_SIGNALS:
    void lineMenuRequested(const tembrix::Uuid& line, const QPoint& globalPosition);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    // The selection is the line that marks go to; a click only asks for another.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex&,
                                                         const QEvent*) const override {
        return QItemSelectionModel::NoUpdate;
    }

  private:
    void followSelection();
    void drag(Qt::DropActions actions);
    void moveCurrent(int step);
    void showGap(std::optional<int> row);
    QRect gapArea(int row) const;

    TimelineEditingModel& model_;
    LineNamesModel& names_;
    std::optional<Uuid> kept_;  // the current line while the rows are replaced
    QPointer<QDrag> drag_;
    std::optional<int> gap_;  // the row above which a dragged line would be inserted
};

}  // namespace tembrix
