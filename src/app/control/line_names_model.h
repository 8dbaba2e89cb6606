#pragma once

#include <QAbstractListModel>

#include "base/uuid.h"

#include "ports/texts.h"

#include "core/collections/tag_library_manager.h"
#include "core/control/timeline_editing_model.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// The lines of the open video for the name column: name, color, number of stamps. A dragged line is
// identified by its id as plain text.
class LineNamesModel final : public QAbstractListModel {
    Q_OBJECT
  public:
    enum Role { colorRole = Qt::UserRole, countRole, selectedRole };

    LineNamesModel(TimelineEditingModel& model, TimelineDataManager& timeline,
                   TagLibraryManager& library, const Texts& texts, QObject* parent = nullptr);

    std::optional<Uuid> lineAt(const QModelIndex& index) const;
    QModelIndex indexOf(const Uuid& line) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override { return {"text/plain"}; }
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

  Q_SIGNALS:
    // Emitted before and after all rows are replaced.
    void aboutToReplace();
    void replaced();

  private:
    void takeRows();
    // The row above which a dropped line is inserted; the number of rows if it is inserted below
    // all of them.
    int dropRow(int row, const QModelIndex& parent) const;

    TimelineEditingModel& model_;
    TimelineDataManager& timeline_;
    TagLibraryManager& library_;
    const Texts& texts_;
    std::vector<Uuid> lines_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
