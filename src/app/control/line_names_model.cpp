#include "app/control/line_names_model.h"

#include <QColor>
#include <QMimeData>

#include "base/shortened.h"

#include "app/theme/theme.h"
#include "app/widgets/qt_text.h"
#include "core/control/timeline_rows.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

LineNamesModel::LineNamesModel(TimelineEditingModel& model, TimelineDataManager& timeline,
                               TagLibraryManager& library, const Texts& texts, QObject* parent)
    : QAbstractListModel(parent),
      model_(model),
      timeline_(timeline),
      library_(library),
      texts_(texts) {
    const auto repaint = [this] {
        if (!lines_.empty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    };
    subscriptions_.push_back(
        model.rowsChanged.observe([this](const std::vector<std::size_t>&) { takeRows(); }));
    subscriptions_.push_back(
        timeline.selectedLineID.observe([repaint](const std::optional<Uuid>&) { repaint(); }));
    subscriptions_.push_back(
        library.merged.observe([repaint](const CollectionLists&) { repaint(); }));
    takeRows();
}

void LineNamesModel::takeRows() {
    const TimelineRows& rows = model_.rows();
    std::vector<Uuid> lines;
    for (std::size_t i = 0; i < rows.size(); ++i)
        lines.push_back(rows[i].line->id);
    if (lines == lines_) {
        if (!lines_.empty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1));
        return;
    }
    Q_EMIT aboutToReplace();
    beginResetModel();
    lines_ = std::move(lines);
    endResetModel();
    Q_EMIT replaced();
}

std::optional<Uuid> LineNamesModel::lineAt(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    return lines_[static_cast<std::size_t>(index.row())];
}

QModelIndex LineNamesModel::indexOf(const Uuid& line) const {
    for (std::size_t i = 0; i < lines_.size(); ++i)
        if (lines_[i] == line)
            return index(static_cast<int>(i));
    return {};
}

int LineNamesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant LineNamesModel::data(const QModelIndex& index, int role) const {
    if (!lineAt(index))
        return {};
    const TimelineLine& line = *model_.rows()[static_cast<std::size_t>(index.row())].line;
    switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return qtext(shortened(line.name));
        case Qt::AccessibleTextRole:
            return qtext(texts_.format("timelineAccessibleName",
                                       {shortened(line.name), std::to_string(line.stamps.size())}));
        case colorRole: {
            const std::string hex = lineColorHex(line, library_);
            return hex.empty() ? QVariant() : theme::toQColor(parseHexColor(hex));
        }
        case countRole:
            return QVariant::fromValue(line.stamps.size());
        case selectedRole:
            return *timeline_.selectedLineID == line.id;
        default:
            return {};
    }
}

Qt::ItemFlags LineNamesModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;  // between the lines and below them
    const Qt::ItemFlags flags =
        Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled | Qt::ItemNeverHasChildren;
    return lineAt(index) == drawingsLineId() ? flags : flags | Qt::ItemIsDragEnabled;
}

QMimeData* LineNamesModel::mimeData(const QModelIndexList& indexes) const {
    const auto line = indexes.empty() ? std::nullopt : lineAt(indexes.front());
    if (!line)
        return nullptr;
    auto* data = new QMimeData;
    data->setText(qtext(line->text()));
    return data;
}

int LineNamesModel::dropRow(int row, const QModelIndex& parent) const {
    // A drop just above a line has the same effect as a drop on it.
    if (parent.isValid())
        return parent.row();
    return row >= 0 && row < rowCount() ? row : rowCount();
}

bool LineNamesModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                                     const QModelIndex& parent) const {
    return data->hasText() && lineAt(index(dropRow(row, parent))) != drawingsLineId();
}

bool LineNamesModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                  const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    // The view is still processing the drop, so the lines are reordered after it has returned.
    QMetaObject::invokeMethod(
        this,
        [this, text = utf8Text(data->text()), current = lineAt(index(dropRow(row, parent)))] {
            model_.dropLine(text, current);
        },
        Qt::QueuedConnection);
    return true;
}

}  // namespace tembrix
