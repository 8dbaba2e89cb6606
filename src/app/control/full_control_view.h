#pragma once

#include <QWidget>
#include <optional>
#include <vector>

#include "base/uuid.h"

#include "app/commands/sheet_commands.h"
#include "app/control/control_services.h"
#include "core/control/timeline_editing_model.h"
#include "core/control/timeline_texts.h"
#include "core/records/timeline_records.h"

namespace tembrix {

class ControlToolbar;
class ElidedLabel;
class Sheet;
class TimelinesArea;

// The content of the control window: shows all timelines of the open video on one time axis and
// edits them.
class FullControlView final : public QWidget {
    Q_OBJECT
  public:
    explicit FullControlView(const ControlServices& services, QWidget* parent = nullptr);
    ~FullControlView() override;

    TimelineEditingModel& model() { return model_; }

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void bindCommands();
    void bindLineCommands();
    void bindStampCommands();
    // The focused line of the name column, else the selected line.
    std::optional<Uuid> chosenLine() const;
    bool mayEdit(const Uuid& line, LineMenuAction action) const;
    void present(Sheet* sheet);
    void openAddLine();
    void openEditName(const Uuid& line);
    void openStampEdit(StampEditSheetType type);
    void showHover();

    const ControlServices services_;
    TimelineEditingModel model_;
    const SheetCommands sheets_;
    ControlToolbar* toolbar_;
    TimelinesArea* area_;
    ElidedLabel* status_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
