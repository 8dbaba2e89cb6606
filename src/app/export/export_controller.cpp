#include "app/export/export_controller.h"

#include <QAction>
#include <QMenu>
#include <QToolButton>

#include "base/result.h"

#include "app/export/export_mode_sheet.h"
#include "app/export/saved_product_bar.h"
#include "app/export/selection_sheets.h"
#include "app/export/waiting_panel.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/menu_button.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/sheet.h"
#include "app/widgets/translated.h"
#include "core/collections/tag_library_manager.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/export/cut_planning.h"
#include "core/export/export_run.h"
#include "core/notifications/event_bus.h"
#include "core/notifications/events.h"
#include "core/playback/video_player_manager.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

ExportController::ExportController(const ExportWindowServices& services, QWidget* window)
    : QObject(window),
      services_(services),
      window_(window),
      sheets_(services.commands, *window),
      exportHelper_(services.exports, utf8Text(window->window()->objectName())),
      waiting_(new WaitingPanel(services.texts, window)) {
    progress_ = exportHelper_.status.observe(
        [this](const ExportStatus& status) { waiting_->showStatus(status); });
    new SavedProductBar(services.exports.products, services.panels, services.texts,
                        utf8Text(window->window()->objectName()), window);
    connect(waiting_, &WaitingPanel::canceled, this,
            [this] { exportHelper_.cancelCurrentExport(); });
    const auto bind = [this](Command command, void (ExportController::*start)()) {
        // One run at a time.
        commands_.push_back(sheets_.bind(
            command, {[this, start] { (this->*start)(); }, [this] { return !isExporting_; }, {}}));
    };
    bind(Command::exportTimeline, &ExportController::exportTimeline);
    bind(Command::exportAll, &ExportController::exportAll);
    bind(Command::exportDrawings, &ExportController::exportDrawings);
    bind(Command::exportTags, &ExportController::exportTags);
    bind(Command::exportLabels, &ExportController::exportLabels);
    bind(Command::exportEvents, &ExportController::exportEvents);
}

ExportController::~ExportController() = default;

QToolButton* ExportController::makeMenuButton(QWidget* parent) {
    auto* button = new MenuButton(parent);
    showIcon(button, services_.texts, "fullControlExport", "document-export");
    showText(button, services_.texts, "fullControlExport", &QAbstractButton::text,
             &QAbstractButton::setText);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(button);
    for (const CommandRow& row : commandTable()) {
        if (row.menu != CommandMenu::exports)
            continue;
        auto* action = new QAction(menu);
        menu->addAction(action);
        showText(action, services_.texts, row.textKey, &QAction::text, &QAction::setText);
        action->setObjectName(row.textKey);
        connect(action, &QAction::triggered, this,
                [this, command = row.id] { services_.commands.run(command); });
    }
    nameControl(menu, services_.texts, "fullControlExport");
    button->setMenu(menu);
    // One export runs at a time.
    button->setEnabled(!isExporting_);
    connect(this, &ExportController::isExportingChanged, button,
            [button](bool exporting) { setUsable(button, !exporting); });
    return button;
}

void ExportController::exportTags() {
    const auto& lines = services_.timeline.lines.get();
    const auto& library = services_.tagLibrary.merged.get();
    auto* sheet = new TagSelectionSheetView(
        window_, services_.texts, services_.focus, tagsOnTimelines(lines, library),
        [&](const Tag& tag) { return !labelsOfTag(lines, library, tag).empty(); });
    sheet->onSelect = [this](const Tag& tag) { askMode(cuts::TagCuts{tag}); };
    sheet->onSelectWithLabels = [this](const Tag& tag) { askLabels(tag); };
    present(sheet);
}

void ExportController::askLabels(const Tag& tag) {
    auto* sheet = new MultiLabelSelectionSheetView(
        window_, services_.texts, services_.focus,
        labelsOfTag(services_.timeline.lines.get(), services_.tagLibrary.merged.get(), tag));
    sheet->onDone = [this, tag](const std::vector<Label>& labels) {
        askMode(cuts::TagWithLabels{tag, labels});
    };
    sheet->onSkip = [this, tag] { askMode(cuts::TagCuts{tag}); };
    present(sheet);
}

void ExportController::exportLabels() {
    auto* sheet = new LabelSelectionSheetView(
        window_, services_.texts, services_.focus,
        labelsOnTimelines(services_.timeline.lines.get(), services_.tagLibrary.merged.get()));
    sheet->onLabelSelected = [this](const Label& label) { askTags(label); };
    present(sheet);
}

void ExportController::askTags(const Label& label) {
    auto* sheet = new MultiTagSelectionSheetView(
        window_, services_.texts, services_.focus,
        tagsOfLabel(services_.timeline.lines.get(), services_.tagLibrary.merged.get(), label));
    sheet->onDone = [this, label](const std::vector<Tag>& tags) {
        askMode(cuts::LabelWithTags{label, tags});
    };
    sheet->onSkip = [this, label] { askMode(cuts::LabelCuts{label}); };
    present(sheet);
}

void ExportController::exportEvents() {
    auto* sheet = new EventSelectionSheetView(
        window_, services_.texts, services_.focus,
        eventsOnTimelines(services_.timeline.lines.get(), services_.tagLibrary.merged.get()));
    sheet->onSelect = [this](const TimeEvent& event) { askMode(cuts::TimeEventCuts{event}); };
    present(sheet);
}

void ExportController::exportScreenshots() {
    run(cuts::Screenshots{}, ExportMode::playlist);
}

void ExportController::askMode(const CutsExportType& type) {
    auto* sheet = new ExportModeSelectionSheet(window_, services_.texts, exportWithDrawings_,
                                               services_.exports.drawings != nullptr);
    connect(sheet, &QDialog::finished, this,
            [this, sheet] { exportWithDrawings_ = sheet->exportWithDrawings(); });
    sheet->onSelect = [this, type](ExportMode mode) { run(type, mode); };
    present(sheet);
}

void ExportController::run(const CutsExportType& type, ExportMode mode) {
    if (isExporting_)
        return;
    setExporting(true);
    exportHelper_.startExport(
        type, mode == ExportMode::playlist, exportWithDrawings_,
        [this](const std::optional<Error>& error) {
            setExporting(false);
            if (error)
                services_.panels.alert(services_.texts.text("fullControlExportErrorTitle"),
                                       error->text, {}, utf8Text(window_->window()->objectName()));
        });
}

// Hot keys are blocked while a sheet is open, and the video pauses.
void ExportController::present(Sheet* sheet) {
    services_.events.post(events::EditTimelineSheetAppeared{});
    connect(sheet, &QDialog::finished, this,
            [this] { services_.events.post(events::SheetDismissed{}); });
    sheet->holdWhileOpen(services_.exports.videoManager.pauseMeanwhile());
    sheet->present();
}

void ExportController::setExporting(bool exporting) {
    isExporting_ = exporting;
    services_.commands.refresh();
    if (exporting)
        waiting_->appear();
    else
        waiting_->vanish();
    Q_EMIT isExportingChanged(exporting);
}

}  // namespace tembrix
