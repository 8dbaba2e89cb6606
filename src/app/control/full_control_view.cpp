#include "app/control/full_control_view.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "app/control/control_toolbar.h"
#include "app/control/line_name_sheets.h"
#include "app/control/line_names_view.h"
#include "app/control/timelines_area.h"
#include "app/export/export_controller.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/focus_rest.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/saved_sign.h"
#include "app/widgets/sheet.h"
#include "app/widgets/stamp_items_sheet.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/keyboard/hot_key_codes.h"
#include "core/marking/stamp_items_selection.h"
#include "core/playback/video_player_manager.h"
#include "core/records/markup_mode.h"
#include "core/timeline/timeline_history.h"

namespace tembrix {

FullControlView::FullControlView(const ControlServices& services, QWidget* parent)
    : QWidget(parent),
      services_(services),
      model_(services.timeline, services.tagLibrary, services.markupModes, services.player,
             services.focus, services.defaults, services.scheduler, services.events),
      sheets_(services.commands, *this),
      toolbar_(new ControlToolbar(services, model_, this)),
      area_(new TimelinesArea(services, model_, this)),
      status_(new ElidedLabel({}, this)) {
    nameControl(this, services.texts, "timelines");
    restFocusOn(this);
    nameControl(status_, services.texts, "timelineHoverText");
    status_->setContentsMargins(theme::margin, theme::unit, theme::margin, theme::unit);
    status_->setFixedHeight(theme::controlHeight - theme::unit);
    setLook(status_, LabelLook::secondary);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(toolbar_);
    column->addWidget(makeSeparator(Qt::Horizontal, this));
    column->addWidget(area_, 1);
    column->addWidget(makeSeparator(Qt::Horizontal, this));
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(status_, 1);
    bottom->addWidget(new SavedSign(services.health, services.texts, this));
    column->addLayout(bottom);

    auto* exports = new ExportController(
        {services.timeline, services.tagLibrary, services.exports, services.focus, services.events,
         services.commands, services.panels, services.texts},
        this);
    toolbar_->addGroup(exports->makeMenuButton(toolbar_));
    connect(area_, &TimelinesArea::editNameRequested, this, &FullControlView::openEditName);
    subscriptions_.push_back(model_.hoveredStampInfo.observe(
        [this](const std::optional<std::string>&) { showHover(); }));
    subscriptions_.push_back(
        model_.pointedStamp.observe([this](const std::optional<Uuid>&) { showHover(); }));
    subscriptions_.push_back(
        model_.editing.sheetType.observe([this](const std::optional<StampEditSheetType>& type) {
            if (type)
                openStampEdit(*type);
        }));
    bindCommands();
}

FullControlView::~FullControlView() {
    // The rules of the commands ask the parts.
    subscriptions_.clear();
    // The child views use the model in their destructors and when they lose the focus, so they are
    // destroyed before it.
    hide();
    delete area_;
    delete toolbar_;
}

void FullControlView::bindCommands() {
    const auto bind = [this](Command command, std::function<void()> run,
                             std::function<bool()> enabled, std::function<bool()> checked = {}) {
        subscriptions_.push_back(services_.commands.bind(
            command, {std::move(run), std::move(enabled), std::move(checked)}));
    };
    bind(
        Command::undo,
        [this] {
            model_.cancelGesture();
            services_.history.undo();
        },
        [this] { return *services_.history.canUndo && model_.canTakeBack(); });
    bind(
        Command::redo,
        [this] {
            model_.cancelGesture();
            services_.history.redo();
        },
        [this] { return *services_.history.canRedo && model_.canTakeBack(); });
    const auto enabled = [this] { return model_.timelinesEnabled(); };
    bind(
        Command::zoomIn, [this] { model_.zoomIn(); }, enabled);
    bind(
        Command::zoomOut, [this] { model_.zoomOut(); },
        [this] {
            return model_.timelinesEnabled() &&
                   *model_.timelineScale > TimelineEditingModel::smallestScale;
        });
    subscriptions_.push_back(sheets_.bind(
        Command::addLine, {[this] { openAddLine(); }, [this] { return model_.canAddLine(); }, {}}));
    for (const auto& [command, mode] : {std::pair(Command::standardMode, MarkupMode::standard),
                                        std::pair(Command::tagBasedMode, MarkupMode::tagBased)})
        bind(
            command, [this, mode = mode] { model_.setMode(mode); }, {},
            [this, mode = mode] { return *model_.markupMode == mode; });
    bindLineCommands();
    bindStampCommands();

    const auto refresh = [this](const auto&) { services_.commands.refresh(); };
    subscriptions_.push_back(services_.history.canUndo.observe(refresh));
    subscriptions_.push_back(services_.history.canRedo.observe(refresh));
    subscriptions_.push_back(services_.timeline.selectedLineID.observe(refresh));
    subscriptions_.push_back(services_.timeline.selectedStampID.observe(refresh));
    subscriptions_.push_back(model_.markupMode.observe(refresh));
    subscriptions_.push_back(model_.isEditorModeActive.observe(refresh));
    subscriptions_.push_back(model_.isScreenshotDisplayActive.observe(refresh));
    subscriptions_.push_back(model_.zoomChanged.observe([this] { services_.commands.refresh(); }));
}

void FullControlView::bindLineCommands() {
    const auto onLine = [this](LineMenuAction action, std::function<void(const Uuid&)> run) {
        return Commands::Action{
            [this, run = std::move(run)] { run(*chosenLine()); },
            [this, action] { return chosenLine() && mayEdit(*chosenLine(), action); },
            {}};
    };
    subscriptions_.push_back(sheets_.bind(
        Command::renameLine,
        onLine(LineMenuAction::editName, [this](const Uuid& line) { openEditName(line); })));
    subscriptions_.push_back(services_.commands.bind(
        Command::deleteLine, onLine(LineMenuAction::deleteTimeline, [this](const Uuid& line) {
            services_.timeline.deleteLine(line);
        })));
}

bool FullControlView::mayEdit(const Uuid& line, LineMenuAction action) const {
    const auto items = lineMenu(line, *model_.markupMode, services_.texts);
    return model_.timelinesEnabled() &&
           std::any_of(items.begin(), items.end(), [action](const LineMenuItem& item) {
               return item.action == action && item.enabled;
           });
}

std::optional<Uuid> FullControlView::chosenLine() const {
    const auto* names = area_->names();
    return names->hasFocus() ? names->currentLine() : *services_.timeline.selectedLineID;
}

void FullControlView::bindStampCommands() {
    const auto chosen = [this] {
        return model_.timelinesEnabled() && *services_.timeline.selectedStampID;
    };
    const auto edit = [this](StampEditSheetType type) {
        const Uuid stamp = **services_.timeline.selectedStampID;
        if (const auto hit = model_.rows().findStamp(stamp))
            model_.editing.request(model_.rows()[hit->row].line->id, stamp, type);
    };
    const auto bind = [&](Command command, std::function<void()> run) {
        subscriptions_.push_back(sheets_.bind(command, {std::move(run), chosen, {}}));
    };
    bind(Command::editLabels, [edit] { edit(StampEditSheetType::lables); });
    bind(Command::editTimeEvents, [edit] { edit(StampEditSheetType::timeEvents); });
    subscriptions_.push_back(services_.commands.bind(
        Command::removeStamp, {[this] { model_.removeSelectedStamp(); },
                               [this] { return model_.canRemoveSelectedStamp(); },
                               {}}));
}

void FullControlView::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        model_.appear();
    }
    QWidget::showEvent(event);
}

void FullControlView::hideEvent(QHideEvent* event) {
    if (!event->spontaneous()) {
        model_.disappear();
    }
    QWidget::hideEvent(event);
}

// The video does not play on behind a sheet.
void FullControlView::present(Sheet* sheet) {
    sheet->holdWhileOpen(services_.player.pauseMeanwhile());
    sheet->present();
}

void FullControlView::openAddLine() {
    auto* sheet = new AddLineSheet(
        window(), services_, [this](const std::string& name) { services_.timeline.addLine(name); });
    present(sheet);
}

void FullControlView::openEditName(const Uuid& line) {
    const TimelineLine* found = services_.timeline.findLine(line);
    if (!found)
        return;
    auto* sheet = new EditTimelineNameSheet(
        window(), services_, found->name,
        [this, line](const std::string& name) { services_.timeline.renameLine(line, name); });
    present(sheet);
}

void FullControlView::openStampEdit(StampEditSheetType type) {
    // Another sheet may have opened since the request.
    if (sheets_.areBlocked())
        return model_.editing.cancel();
    const auto edit = model_.editing.requested(type);
    auto arguments = edit ? model_.editing.arguments(*edit) : std::nullopt;
    if (!arguments) {
        auto* sheet = new Sheet(window(), services_.texts, "fullControlExportErrorStampNotFound");
        sheet->addAcceptButton("okButtonTitle");
        connect(sheet, &QDialog::finished, this, [this] { model_.editing.cancel(); });
        present(sheet);
        return;
    }
    auto* sheet = new StampItemsSheet(
        window(), services_.texts, type, "saveButtonTitle",
        std::make_unique<StampItemsSelection>(std::move(*arguments), services_.tagLibrary,
                                              services_.hotkeys, services_.events));
    connect(sheet, &QDialog::accepted, this,
            [this, sheet, edit = *edit] { model_.editing.finish(edit, sheet->ids()); });
    connect(sheet, &QDialog::rejected, this, [this] { model_.editing.cancel(); });
    present(sheet);
}

void FullControlView::showHover() {
    const QString gap = "   ·   ";
    QStringList parts;
    if (const auto& hovered = *model_.hoveredStampInfo)
        parts << qtext(*hovered).replace("\n", gap);
    if (const auto pointed = model_.pointedStampInfo())
        parts << qtext(services_.texts.format("timelineClickTakes", {*pointed})).replace("\n", gap);
    status_->setFullText(parts.join("      "));
}

}  // namespace tembrix
