#pragma once

#include <QObject>
#include <optional>
#include <vector>

#include "app/commands/sheet_commands.h"
#include "app/export/export_window_services.h"
#include "core/export/cut_records.h"
#include "core/export/export_helper.h"
#include "core/records/annotation_records.h"

class QToolButton;
class QWidget;

namespace tembrix {

class Sheet;
class WaitingPanel;

// The exports of one window: the menu, the sheets, the waiting panel and the alert about a failed
// run. The window places the menu's button. Sheets and panel appear over the window.
//
//     auto* exports = new ExportController(services, this);
//     toolbar->addWidget(exports->makeMenuButton(toolbar));
class ExportController final : public QObject {
    Q_OBJECT
  public:
    // A child of the window. Its destruction ends a run.
    ExportController(const ExportWindowServices& services, QWidget* window);
    ~ExportController() override;

    QToolButton* makeMenuButton(QWidget* parent);
    bool isExporting() const { return isExporting_; }

    // The entries of the menu.
    void exportTimeline() { askMode(cuts::CurrentTimeline{}); }
    void exportAll() { askMode(cuts::AllTimelines{}); }
    void exportDrawings() { askMode(cuts::DrawingsTimeline{}); }
    void exportTags();
    void exportLabels();
    void exportEvents();
    // Packs the pictures of the drawings. Does not ask for a mode.
    void exportScreenshots();

  Q_SIGNALS:
    void isExportingChanged(bool isExporting);

  private:
    void askLabels(const Tag& tag);
    void askTags(const Label& label);
    void askMode(const CutsExportType& type);
    void run(const CutsExportType& type, ExportMode mode);
    void present(Sheet* sheet);
    void setExporting(bool exporting);

    const ExportWindowServices services_;
    QWidget* window_;
    const SheetCommands sheets_;
    ExportHelper exportHelper_;
    WaitingPanel* waiting_;
    bool exportWithDrawings_ = false;
    bool isExporting_ = false;
    Subscription progress_;
    std::vector<Subscription> commands_;
};

}  // namespace tembrix
