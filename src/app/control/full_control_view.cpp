#include "app/control/full_control_view.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/control/control_toolbar.h"
#include "app/control/line_name_sheets.h"
#include "app/control/timelines_area.h"
#include "app/export/export_controller.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/letter_keys.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/sheet.h"
#include "app/widgets/stamp_items_sheet.h"
#include "core/keyboard/hot_key_codes.h"
#include "core/marking/stamp_items_selection.h"
#include "core/playback/video_player_manager.h"
#include "core/timeline/timeline_history.h"

namespace tembrix {

FullControlView::FullControlView(const ControlServices& services, QWidget* parent)
    : QWidget(parent),
      services_(services),
      model_(services.timeline, services.tagLibrary, services.markupModes, services.player,
             services.focus, services.defaults, services.scheduler, services.events),
      toolbar_(new ControlToolbar(services, model_, this)),
      area_(new TimelinesArea(services, model_, this)),
      status_(new ElidedLabel({}, this)) {
    nameControl(this, services.texts, "timelines");
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
    column->addWidget(status_);

    auto* exports =
        new ExportController({services.timeline, services.tagLibrary, services.exports,
                              services.focus, services.events, services.panels, services.texts},
                             this);
    toolbar_->addGroup(exports->makeMenuButton(toolbar_));
    connect(toolbar_, &ControlToolbar::addLineRequested, this, &FullControlView::openAddLine);
    connect(area_, &TimelinesArea::editNameRequested, this, &FullControlView::openEditName);
    subscriptions_.push_back(model_.hoveredStampInfo.observe(
        [this](const std::optional<std::string>& text) { showHover(text); }));
    subscriptions_.push_back(
        model_.editing.sheetType.observe([this](const std::optional<StampEditSheetType>& type) {
            if (type)
                openStampEdit(*type);
        }));
    addShortcuts();
}

FullControlView::~FullControlView() {
    // The child views use the model in their destructors and when they lose the focus, so they are
    // destroyed before it.
    hide();
    delete area_;
    delete toolbar_;
}

void FullControlView::addShortcuts() {
    const auto add = [this](const QList<QKeySequence>& keys, auto action) {
        auto* shortcut = new QShortcut(this);
        shortcut->setKeys(keys);
        connect(shortcut, &QShortcut::activated, this, action);
        return shortcut;
    };
    QShortcut* undo = add(letterKeys(Qt::ControlModifier, Qt::Key_Z), [this] {
        model_.cancelGesture();
        services_.history.undo();
    });
    QShortcut* redo = add(letterKeys(Qt::ControlModifier | Qt::ShiftModifier, Qt::Key_Z), [this] {
        model_.cancelGesture();
        services_.history.redo();
    });
    subscriptions_.push_back(model_.isEditorModeActive.observe([this, undo, redo](const bool&) {
        for (QShortcut* shortcut : {undo, redo})
            shortcut->setEnabled(model_.canTakeBack());
    }));
    add({QKeySequence("Ctrl++"), QKeySequence("Ctrl+=")}, [this] { model_.zoomIn(); });
    add({QKeySequence("Ctrl+-")}, [this] { model_.zoomOut(); });
}

void FullControlView::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        qApp->installEventFilter(this);
        model_.appear();
    }
    QWidget::showEvent(event);
}

void FullControlView::hideEvent(QHideEvent* event) {
    if (!event->spontaneous()) {
        qApp->removeEventFilter(this);
        model_.disappear();
    }
    QWidget::hideEvent(event);
}

bool FullControlView::eventFilter(QObject* watched, QEvent* event) {
    // The native window receives a key press before its widgets do; only that first event is
    // handled. Backspace deletes the selected stamp. Popups and dialogs handle their own keys.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType() ||
        QApplication::activePopupWidget() || qobject_cast<QDialog*>(QApplication::activeWindow()))
        return false;
    const auto* press = static_cast<QKeyEvent*>(event);
    if (press->key() == Qt::Key_F10 && press->modifiers() == Qt::ShiftModifier)
        return openMenuByKeyboard();
    if (press->key() != Qt::Key_Backspace)
        return false;
    KeyPress translated{key::deleteKey, {}, {}};
    translated.modifiers.option = press->modifiers() & Qt::AltModifier;
    return model_.handleKeyDown(translated);
}

bool FullControlView::openMenuByKeyboard() {
    // Qt opens context menus with the menu key only, which many keyboards lack.
    QWidget* focus = QApplication::focusWidget();
    if (!focus || !isAncestorOf(focus))
        return false;
    const QPoint middle = focus->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, middle, focus->mapToGlobal(middle));
    QApplication::sendEvent(focus, &event);
    return true;
}

void FullControlView::openAddLine() {
    auto* sheet = new AddLineSheet(
        window(), services_, [this](const std::string& name) { services_.timeline.addLine(name); });
    sheet->present();
}

void FullControlView::openEditName(const Uuid& line) {
    const TimelineLine* found = services_.timeline.findLine(line);
    if (!found)
        return;
    auto* sheet = new EditTimelineNameSheet(
        window(), services_, found->name,
        [this, line](const std::string& name) { services_.timeline.renameLine(line, name); });
    sheet->present();
}

void FullControlView::openStampEdit(StampEditSheetType type) {
    auto arguments = model_.editing.arguments(type);
    if (!arguments) {
        auto* sheet = new Sheet(window(), services_.texts, "fullControlExportErrorStampNotFound");
        sheet->addAcceptButton("okButtonTitle");
        connect(sheet, &QDialog::finished, this, [this] { model_.editing.cancel(); });
        sheet->present();
        return;
    }
    auto* sheet = new StampItemsSheet(
        window(), services_.texts, type,
        std::make_unique<StampItemsSelection>(std::move(*arguments), services_.tagLibrary,
                                              services_.hotkeys, services_.events));
    connect(sheet, &QDialog::accepted, this,
            [this, sheet] { model_.editing.finish(sheet->ids()); });
    connect(sheet, &QDialog::rejected, this, [this] { model_.editing.cancel(); });
    sheet->present();
}

void FullControlView::showHover(const std::optional<std::string>& text) {
    status_->setFullText(text ? qtext(*text).replace("\n", "   ·   ") : QString());
}

}  // namespace tembrix
