#include "app/widgets/flow_layout.h"

#include <algorithm>

namespace tembrix {

FlowLayout::FlowLayout(int spacing, QWidget* parent) : QLayout(parent) {
    setContentsMargins(0, 0, 0, 0);
    setSpacing(spacing);
}

FlowLayout::~FlowLayout() {
    for (auto* item : items_)
        delete item;
}

void FlowLayout::setFillsRows(bool fills) {
    fillsRows_ = fills;
    invalidate();
}

void FlowLayout::addItem(QLayoutItem* item) {
    items_.push_back(item);
    invalidate();
}

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)] : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    auto* item = itemAt(index);
    if (item) {
        items_.erase(items_.begin() + index);
        invalidate();
    }
    return item;
}

int FlowLayout::heightForWidth(int width) const {
    return arrange({0, 0, width, 0}, false);
}

QSize FlowLayout::minimumSize() const {
    QSize widest;
    for (const auto* item : items_)
        if (!item->isEmpty())
            widest = widest.expandedTo(item->minimumSize());
    const auto margins = contentsMargins();
    return widest + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

void FlowLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int FlowLayout::arrange(const QRect& rect, bool apply) const {
    const QRect area = rect.marginsRemoved(contentsMargins());
    // All items are widened by the same amount, computed for a full row.
    int extra = 0;
    if (fillsRows_) {
        int widest = 0, shown = 0;
        for (const auto* item : items_)
            if (!item->isEmpty()) {
                widest = std::max(widest, item->sizeHint().width());
                ++shown;
            }
        if (shown > 0 && widest > 0 && area.width() > widest) {
            const int perRow = (area.width() + spacing()) / (widest + spacing());
            extra = (area.width() + spacing()) / perRow - spacing() - widest;
        }
    }
    int x = area.x(), y = area.y(), rowHeight = 0;
    for (auto* item : items_) {
        if (item->isEmpty())
            continue;
        QSize size = item->sizeHint();
        size.setWidth(std::min(size.width() + extra, std::max(area.width(), 1)));
        if (item->hasHeightForWidth())
            size.setHeight(item->heightForWidth(size.width()));
        if (x > area.x() && x + size.width() > area.right() + 1) {
            x = area.x();
            y += rowHeight + spacing();
            rowHeight = 0;
        }
        if (apply)
            item->setGeometry({QPoint(x, y), size});
        x += size.width() + spacing();
        rowHeight = std::max(rowHeight, size.height());
    }
    const auto margins = contentsMargins();
    return y + rowHeight - rect.y() + margins.bottom();
}

}  // namespace tembrix
