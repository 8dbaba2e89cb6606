#include "app/control/control_toolbar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

#include "base/published.h"

#include "app/control/timelines_area.h"
#include "app/playback/player_control_panel.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/segmented_switch.h"
#include "app/widgets/tabular_label.h"
#include "core/control/timeline_editing_model.h"
#include "core/records/markup_mode.h"
#include "core/timeline/timeline_history.h"

namespace tembrix {

ControlToolbar::ControlToolbar(const ControlServices& services, TimelineEditingModel& model,
                               QWidget* parent)
    : QWidget(parent), services_(services), model_(model), row_(new QHBoxLayout(this)) {
    row_->setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::spacing);
    row_->setSpacing(theme::spacing);
    addModes();
    separate();
    addHistory();
    separate();
    addTransport();
    row_->addStretch(1);
    addZoom();
}

void ControlToolbar::separate() {
    row_->addSpacing(theme::unit);
    row_->addWidget(makeSeparator(Qt::Vertical, this));
    row_->addSpacing(theme::unit);
}

void ControlToolbar::addGroup(QWidget* group) {
    separate();
    row_->addWidget(group);
}

void ControlToolbar::addModes() {
    auto* modes = new SegmentedSwitch(services_.texts,
                                      {"fullControlModeStandard", "fullControlModeTagBased"}, this);
    modes->setToolTip(qtext(services_.texts.text("fullControlModeHelp")));
    nameControl(modes, services_.texts, "fullControlModeHelp");
    row_->addWidget(modes);
    auto* add =
        makeButton(services_.texts, "fullControlButtonAddTimeline", ButtonLook::quiet, this);
    add->setIcon(theme::icon("list-add"));
    row_->addWidget(add);

    const auto show = [this, modes, add] {
        modes->choose(*model_.markupMode == MarkupMode::standard ? 0 : 1);
        add->setEnabled(model_.canAddLine());
    };
    show();
    subscriptions_.push_back(model_.markupMode.observe([show](const MarkupMode&) { show(); }));
    connect(modes, &SegmentedSwitch::chosenByUser, this, [this](int index) {
        model_.setMode(index == 0 ? MarkupMode::standard : MarkupMode::tagBased);
    });
    connect(add, &QPushButton::clicked, this, &ControlToolbar::addLineRequested);
}

void ControlToolbar::addHistory() {
    TimelineHistory& history = services_.history;
    const auto add = [this](const char* key, const char* icon, const Observable<bool>& enabled,
                            const Observable<std::optional<std::string>>& step, auto take) {
        QToolButton* button = makeIconButton(services_.texts, key, icon, this);
        row_->addWidget(button);
        connect(button, &QToolButton::clicked, this, take);
        // The tooltip names the edit that would be undone or redone. The accessible name does not
        // change.
        const auto show = [this, button, &enabled, &step, plain = button->toolTip()] {
            button->setEnabled(*enabled && model_.canTakeBack());
            button->setToolTip(*step ? plain + ": " + qtext(services_.texts.text(**step)) : plain);
            button->setAccessibleDescription(button->toolTip());
        };
        show();
        const Observable<bool>& editing = model_.isEditorModeActive;
        for (const Observable<bool>* gate : {&enabled, &editing})
            subscriptions_.push_back(gate->observe([show](const bool&) { show(); }));
        subscriptions_.push_back(
            step.observe([show](const std::optional<std::string>&) { show(); }));
    };
    add("fullControlUndo", "edit-undo", history.canUndo, history.undoName,
        [&history] { history.undo(); });
    add("fullControlRedo", "edit-redo", history.canRedo, history.redoName,
        [&history] { history.redo(); });
}

void ControlToolbar::addTransport() {
    row_->addWidget(makePlayerControlPanel(services_.player, services_.texts, this));
}

void ControlToolbar::addZoom() {
    auto* zoomOut = makeIconButton(services_.texts, "fullControlZoomOut", "list-remove", this);
    auto* figure = new TabularLabel(this);
    nameControl(figure, services_.texts, "fullControlZoom");
    auto* zoomIn = makeIconButton(services_.texts, "fullControlZoomIn", "list-add", this);
    for (QWidget* part : {static_cast<QWidget*>(zoomOut), static_cast<QWidget*>(figure),
                          static_cast<QWidget*>(zoomIn)})
        row_->addWidget(part);
    connect(zoomOut, &QToolButton::clicked, this, [this] { model_.zoomOut(); });
    connect(zoomIn, &QToolButton::clicked, this, [this] { model_.zoomIn(); });
    zoomOut->setAutoRepeat(true);
    zoomIn->setAutoRepeat(true);
    const auto show = [this, figure, zoomOut] {
        figure->setText(qtext(model_.zoomText()));
        zoomOut->setEnabled(*model_.timelineScale > TimelineEditingModel::smallestScale);
    };
    show();
    subscriptions_.push_back(model_.zoomChanged.observe(show));
}

}  // namespace tembrix
