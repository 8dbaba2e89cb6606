#include "app/control/control_toolbar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

#include "base/published.h"

#include "app/commands/command_button.h"
#include "app/control/timelines_area.h"
#include "app/playback/player_control_panel.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/segmented_switch.h"
#include "app/widgets/tabular_label.h"
#include "app/widgets/translated.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/control/timeline_editing_model.h"
#include "core/records/markup_mode.h"
#include "core/timeline/timeline_history.h"

namespace tembrix {

namespace {

// The zoom has no upper limit, but a value that is told needs one.
constexpr double largestZoomTold = 1000;

}  // namespace

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
    showText(modes, services_.texts, "fullControlModeHelp", &QWidget::toolTip,
             &QWidget::setToolTip);
    nameControl(modes, services_.texts, "fullControlMode");
    row_->addWidget(modes);
    auto* add =
        makeButton(services_.texts, "fullControlButtonAddTimeline", ButtonLook::quiet, this);
    add->setIcon(theme::icon("list-add"));
    add->setFocusPolicy(Qt::TabFocus);
    bindButton(add, services_.commands, Command::addLine, services_.texts);
    row_->addWidget(add);

    const auto show = [this, modes] {
        modes->choose(*model_.markupMode == MarkupMode::standard ? 0 : 1);
    };
    show();
    subscriptions_.push_back(model_.markupMode.observe([show](const MarkupMode&) { show(); }));
    connect(modes, &SegmentedSwitch::chosenByUser, this, [this](int index) {
        services_.commands.run(index == 0 ? Command::standardMode : Command::tagBasedMode);
    });
}

void ControlToolbar::addHistory() {
    const auto add = [this](Command command, const char* icon,
                            const Observable<std::optional<std::string>>& step) {
        QToolButton* button =
            makeCommandButton(services_.commands, command, services_.texts, icon, this);
        row_->addWidget(button);
        // The help says what would be undone; the name of the button stays.
        const auto show = [this, button, command, &step] {
            const QString plain = commandHelp(services_.commands, command, services_.texts);
            button->setToolTip(*step ? plain + ": " + qtext(services_.texts.text(**step)) : plain);
            button->setAccessibleDescription(button->toolTip());
        };
        followLanguage(button, services_.texts, show);
        subscriptions_.push_back(services_.commands.captionsChanged.observe(show));
        subscriptions_.push_back(
            step.observe([show](const std::optional<std::string>&) { show(); }));
    };
    add(Command::undo, "edit-undo", services_.history.undoName);
    add(Command::redo, "edit-redo", services_.history.redoName);
}

void ControlToolbar::addTransport() {
    row_->addWidget(
        makePlayerControlPanel(services_.player, services_.commands, services_.texts, this));
}

void ControlToolbar::addZoom() {
    auto* zoomOut = makeCommandButton(services_.commands, Command::zoomOut, services_.texts,
                                      "list-remove", this);
    auto* figure = new TabularLabel(this);
    nameControl(figure, services_.texts, "fullControlZoom");
    auto* value = new AccessibleValue(
        figure, QAccessible::Slider,
        [this] {
            return AccessibleValue::Reading{*model_.timelineScale,
                                            TimelineEditingModel::smallestScale, largestZoomTold,
                                            TimelineEditingModel::zoomStep};
        },
        [this](double scale) {
            model_.magnify(scale / *model_.timelineScale);
            model_.endMagnify();
        });
    auto* zoomIn =
        makeCommandButton(services_.commands, Command::zoomIn, services_.texts, "list-add", this);
    for (QWidget* part : {static_cast<QWidget*>(zoomOut), static_cast<QWidget*>(figure),
                          static_cast<QWidget*>(zoomIn)})
        row_->addWidget(part);
    zoomOut->setAutoRepeat(true);
    zoomIn->setAutoRepeat(true);
    const auto show = [this, figure, value] {
        figure->setText(qtext(model_.zoomText()));
        value->changed();
    };
    show();
    subscriptions_.push_back(model_.zoomChanged.observe(show));
}

}  // namespace tembrix
