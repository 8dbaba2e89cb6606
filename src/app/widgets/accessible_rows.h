#pragma once

class QAbstractItemView;
class QAccessibleInterface;

namespace tembrix {

// The list as screen readers see it; null for one that was not told to tellRows().
QAccessibleInterface* makeAccessibleRows(QAbstractItemView* list);

}  // namespace tembrix
