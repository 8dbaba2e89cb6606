#include "app/control/line_names_view.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTimer>
#include <algorithm>

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/tabular_label.h"
#include "core/control/timeline_axis.h"

namespace tembrix {

namespace {

class NameCellDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {0, static_cast<int>(TimelineMetrics::rowHeight)};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const bool selected = index.data(LineNamesModel::selectedRole).toBool();
        const bool focused = option.state & QStyle::State_HasFocus;
        const QRectF cell = option.rect;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->fillRect(cell, selected                                 ? theme::selection
                                : option.state & QStyle::State_MouseOver ? theme::hovered
                                                                         : theme::panel);
        painter->fillRect(QRectF(cell.left(), cell.bottom() - 1, cell.width(), 1), theme::line);

        constexpr double chip = 10;
        const QVariant color = index.data(LineNamesModel::colorRole);
        const QRectF chipArea(cell.left() + theme::spacing, cell.center().y() - chip / 2, chip,
                              chip);
        painter->setPen(color.isValid() ? QPen(Qt::NoPen) : QPen(theme::disabledText, 1));
        painter->setBrush(color.isValid() ? QBrush(color.value<QColor>()) : QBrush(Qt::NoBrush));
        painter->drawRoundedRect(chipArea, 3, 3);

        painter->setFont(theme::font(theme::captionSize));
        painter->setPen(theme::secondaryText);
        const QString count = QString::number(index.data(LineNamesModel::countRole).toULongLong());
        const QFontMetricsF small(painter->font());
        const double countLeft = cell.right() - theme::spacing - tabularWidth(small, count);
        const double baseline = cell.center().y() + (small.ascent() - small.descent()) / 2;
        drawTabular(*painter, {countLeft, baseline}, count);

        painter->setFont(theme::font(theme::textSize, selected ? QFont::DemiBold : QFont::Normal));
        painter->setPen(theme::text);
        const QRectF nameArea(chipArea.right() + theme::spacing, cell.top(),
                              countLeft - chipArea.right() - 2 * theme::spacing, cell.height());
        painter->drawText(
            nameArea, Qt::AlignVCenter | Qt::AlignLeft,
            QFontMetricsF(painter->font())
                .elidedText(index.data().toString(), Qt::ElideRight, nameArea.width()));
        if (focused) {
            painter->setPen(QPen(theme::accent, 1.5));
            painter->setBrush(Qt::NoBrush);
            painter->drawRoundedRect(cell.adjusted(1, 1, -1.5, -2), 4, 4);
        }
        painter->restore();
    }
};

}  // namespace

LineNamesView::LineNamesView(TimelineEditingModel& model, LineNamesModel& names, const Texts& texts,
                             QWidget* parent)
    : QListView(parent), model_(model), names_(names) {
    nameControl(this, texts, "timelineNames");
    setModel(&names);
    tellRows(this, {.menu = true});
    setItemDelegate(new NameCellDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setStyleSheet("QListView { border: none; border-radius: 0; }");
    setUniformItemSizes(true);
    setMouseTracking(true);
    setVerticalScrollMode(ScrollPerPixel);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setDragDropMode(DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setDropIndicatorShown(false);
    connect(this, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (const auto line = names_.lineAt(index))
            model_.selectLine(*line);
    });
    connect(&names, &LineNamesModel::aboutToReplace, this, [this] { kept_ = currentLine(); });
    connect(&names, &LineNamesModel::replaced, this, [this] {
        if (kept_)
            setCurrentIndex(names_.indexOf(*kept_));
        followSelection();
    });
    connect(&names, &LineNamesModel::dataChanged, this, &LineNamesView::followSelection);
    followSelection();
}

LineNamesView::~LineNamesView() {
    if (drag_)
        QDrag::cancel();
}

void LineNamesView::followSelection() {
    for (int row = 0; row < names_.rowCount(); ++row) {
        const QModelIndex index = names_.index(row);
        if (!index.data(LineNamesModel::selectedRole).toBool())
            continue;
        if (!selectionModel()->isSelected(index)) {
            selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
            if (!hasFocus())
                setCurrentIndex(index);
        }
        return;
    }
    selectionModel()->clearSelection();
}

// A drag runs an event loop, in which the project may be closed and this view destroyed. Therefore
// it is not started in an event of the view, is no child of the view, and uses nothing of the view
// when it ends.
void LineNamesView::startDrag(Qt::DropActions actions) {
    QTimer::singleShot(0, qApp, [view = QPointer(this), actions] {
        if (view && QGuiApplication::mouseButtons().testFlag(Qt::LeftButton))
            view->drag(actions);
    });
}

void LineNamesView::drag(Qt::DropActions actions) {
    const QModelIndex index = currentIndex();
    if (!index.flags().testFlag(Qt::ItemIsDragEnabled))
        return;
    const QRect cell = visualRect(index);
    drag_ = new QDrag(qApp);
    drag_->setMimeData(names_.mimeData({index}));
    drag_->setPixmap(viewport()->grab(cell));
    drag_->setHotSpot(viewport()->mapFromGlobal(QCursor::pos()) - cell.topLeft());
    drag_->exec(actions, Qt::MoveAction);
}

void LineNamesView::dragMoveEvent(QDragMoveEvent* event) {
    QListView::dragMoveEvent(event);
    const QModelIndex index = indexAt(event->position().toPoint());
    if (!names_.canDropMimeData(event->mimeData(), event->dropAction(), -1, -1, index)) {
        event->ignore();
        return showGap({});
    }
    event->acceptProposedAction();
    showGap(index.isValid() ? index.row() : names_.rowCount());
}

void LineNamesView::dragLeaveEvent(QDragLeaveEvent* event) {
    QListView::dragLeaveEvent(event);
    showGap({});
}

void LineNamesView::dropEvent(QDropEvent* event) {
    // A line dropped anywhere on a name is inserted above it. The base class would treat the lowest
    // points of a name as the gap below it.
    const QModelIndex index = indexAt(event->position().toPoint());
    QDropEvent onName(index.isValid() ? QPointF(visualRect(index).center()) : event->position(),
                      event->possibleActions(), event->mimeData(), event->buttons(),
                      event->modifiers());
    QListView::dropEvent(&onName);
    event->setDropAction(onName.dropAction());
    event->setAccepted(onName.isAccepted());
    showGap({});
}

void LineNamesView::showGap(std::optional<int> row) {
    if (row == gap_)
        return;
    for (const auto& shown : {gap_, row})
        if (shown)
            viewport()->update(gapArea(*shown));
    gap_ = row;
}

QRect LineNamesView::gapArea(int row) const {
    constexpr int width = 2;
    const QRect below = visualRect(names_.index(row));
    const int y = below.isValid() ? below.top()
                                  : visualRect(names_.index(names_.rowCount() - 1)).bottom() + 1;
    return {0, std::max(y - width / 2, 0), viewport()->width(), width};
}

void LineNamesView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (gap_)
        QPainter(viewport()).fillRect(gapArea(*gap_), theme::accent);
}

void LineNamesView::moveCurrent(int step) {
    if (const auto line = currentLine())
        model_.moveLineBy(*line, step);
}

void LineNamesView::keyPressEvent(QKeyEvent* event) {
    const bool alt = event->modifiers() == Qt::AltModifier;
    if (alt && event->key() == Qt::Key_Up)
        return moveCurrent(-1);
    if (alt && event->key() == Qt::Key_Down)
        return moveCurrent(+1);
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (const auto line = currentLine())
            model_.selectLine(*line);
        return;
    }
    QListView::keyPressEvent(event);
}

void LineNamesView::contextMenuEvent(QContextMenuEvent* event) {
    const bool keyboard = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = keyboard ? currentIndex() : indexAt(event->pos());
    const auto line = names_.lineAt(index);
    if (!line)
        return event->ignore();
    Q_EMIT lineMenuRequested(*line, keyboard
                                        ? viewport()->mapToGlobal(visualRect(index).bottomLeft())
                                        : event->globalPos());
}

}  // namespace tembrix
