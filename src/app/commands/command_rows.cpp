#include "app/commands/command_rows.h"

#include <QHeaderView>
#include <QTreeWidget>

#include "app/widgets/controls.h"

namespace tembrix {

QTreeWidget* makeCommandRows(const Texts& texts, std::string_view nameKey) {
    auto* rows = new QTreeWidget;
    rows->setColumnCount(2);
    rows->setHeaderHidden(true);
    rows->setRootIsDecorated(false);
    rows->setUniformRowHeights(true);
    rows->setStyleSheet("QTreeView::item { padding: 4px; }");
    rows->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    rows->setMinimumSize(460, 320);
    rows->header()->setStretchLastSection(false);
    rows->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    rows->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    nameControl(rows, texts, nameKey);
    return rows;
}

}  // namespace tembrix
