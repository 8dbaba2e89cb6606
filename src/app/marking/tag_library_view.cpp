#include "app/marking/tag_library_view.h"

#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "base/shortened.h"

#include "app/marking/collection_chooser.h"
#include "app/marking/fold_section.h"
#include "app/marking/mark_target_bar.h"
#include "app/marking/marking_sheets.h"
#include "app/marking/tag_button.h"
#include "app/marking/time_event_chip.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/flow_layout.h"
#include "app/widgets/focus_rest.h"
#include "app/widgets/qt_text.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/marking/marking_flow.h"
#include "core/playback/video_player_manager.h"
#include "core/settings/settings.h"

namespace tembrix {
namespace {

std::string seconds(double value) {
    return QString::number(value, 'f', value == std::trunc(value) ? 0 : 1).toStdString();
}

// Whether both lists would produce the same buttons.
bool looksTheSame(const CollectionLists& a, const CollectionLists& b) {
    return a.tags == b.tags && a.tagGroups == b.tagGroups && a.timeEvents == b.timeEvents;
}

}  // namespace

TagLibraryView::TagLibraryView(const TagPanelServices& services, MarkingFlow& flow, QWidget* parent)
    : QWidget(parent), services_(services), flow_(flow), open_(new QWidget(this)) {
    nameControl(this, services.texts, "tagLibrary");
    restFocusOn(this);
    setMinimumSize(320, 240);
    flow_.appear();

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    top_ = new QVBoxLayout;
    top_->setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::spacing);
    top_->setSpacing(theme::unit);
    top_->addWidget(new CollectionChooser(services, flow, this), 1);
    target_ = new MarkTargetBar(services, flow, this);
    top_->addWidget(target_, 1);
    column->addLayout(top_);
    column->addWidget(makeSeparator(Qt::Horizontal, this));
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto* page = new QWidget(scroll);
    body_ = new QVBoxLayout(page);
    body_->setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::margin);
    scroll->setWidget(page);
    column->addWidget(scroll, 1);
    column->addWidget(open_);
    new MarkingSheets(services, flow, this);

    const auto on = [this](auto& published, void (TagLibraryView::*react)()) {
        subscriptions_.push_back(
            published.observe([this, react](const auto&) { (this->*react)(); }));
    };
    subscriptions_.push_back(services.tagLibrary.active.observe([this](const CollectionLists& now) {
        if (!looksTheSame(now, shown_))
            rebuild();
    }));
    on(services.tagLibrary.selectedTimeEvents, &TagLibraryView::showTimeEvents);
    on(services.player.currentTimeValue, &TagLibraryView::showIntervals);
    on(flow.expandedGroups, &TagLibraryView::showExpanded);
    on(flow.tagCounts, &TagLibraryView::showCounts);
    on(flow.activeIntervalTags, &TagLibraryView::showOpenIntervals);
    on(flow.isEditorModeActive, &TagLibraryView::showEditorMode);
    subscriptions_.push_back(services.texts.changed.observe([this] { rebuild(); }));
    auto* strip = new QVBoxLayout(open_);
    strip->setContentsMargins(0, 0, 0, 0);
    strip->setSpacing(0);
    strip->addWidget(makeSeparator(Qt::Horizontal, open_));
    openFlow_ = new FlowLayout(theme::unit);
    openFlow_->setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::spacing);
    strip->addLayout(openFlow_);
    nameControl(open_, services.texts, "tagLibraryOpenIntervals");
    followDensity();
    rebuild();
    showOpenIntervals();
}

void TagLibraryView::followDensity() {
    Settings& settings = services_.settings;
    compact_ = settings.values->compactTags;
    subscriptions_.push_back(settings.values.observe([this](const SettingsValues& values) {
        if (values.compactTags == compact_)
            return;
        compact_ = values.compactTags;
        rebuild();
        showOpenIntervals();
        services_.commands.refresh();
    }));
    subscriptions_.push_back(services_.commands.bind(
        Command::compactTags, {[&settings] {
                                   settings.change(
                                       [](SettingsValues& v) { v.compactTags = !v.compactTags; });
                               },
                               {},
                               [&settings] { return settings.values->compactTags; }}));
}

TagLibraryView::~TagLibraryView() = default;

void TagLibraryView::rebuild() {
    QString focused;
    if (content_) {
        if (const QWidget* focus = window()->focusWidget(); focus && content_->isAncestorOf(focus))
            focused = focus->objectName();
        leaveFocus(content_);
        content_->hide();
        content_->deleteLater();  // one of its buttons may be handling an event
    }
    groups_.clear();
    buttons_.clear();
    chips_.clear();
    shown_ = *services_.tagLibrary.active;
    // Compact, all sections share rows.
    top_->setDirection(compact_ ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    target_->setCompact(compact_);
    content_ = new QWidget;
    auto* column = new QVBoxLayout(content_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::unit + 2);
    rows_ = nullptr;
    if (compact_) {
        auto* rows = new QWidget(content_);
        rows_ = new FlowLayout(theme::unit / 2, rows);
        column->addWidget(rows);
    }
    addTimeEvents(column);
    for (const auto& group : shown_.tagGroups)
        addGroup(column, group);
    if (buttons_.empty())
        column->addWidget(
            makeLabel(services_.texts, "tagLibraryNoTags", LabelLook::secondary, content_));
    column->addStretch(1);
    body_->addWidget(content_);
    showExpanded();
    showCounts();
    showIntervals();
    showTimeEvents();
    showEditorMode();
    content_->show();
    if (auto* focus = focused.isEmpty() ? nullptr : content_->findChild<QWidget*>(focused))
        focus->setFocus();
}

void TagLibraryView::addTimeEvents(QVBoxLayout* column) {
    if (shown_.timeEvents.empty())
        return;
    auto* section =
        new FoldSection("tagLibraryTimeEvents", qtext(services_.texts.text("tagLibraryTimeEvents")),
                        rows_, content_);
    connect(section, &FoldSection::headerPressed, this, [this, section] {
        eventsExpanded_ = !eventsExpanded_;
        section->setExpanded(eventsExpanded_);
    });
    for (const auto& event : shown_.timeEvents) {
        auto* chip = new TimeEventChip(event, compact_, section->body());
        connect(chip, &QAbstractButton::clicked, this,
                [this, id = event.id] { flow_.handleTimeEventTap(id); });
        section->add(chip);
        chips_.emplace(event.id, chip);
    }
    section->setExpanded(eventsExpanded_);
    if (!compact_)
        column->addWidget(section);
}

void TagLibraryView::addGroup(QVBoxLayout* column, const TagGroup& group) {
    std::vector<const Tag*> tags;
    for (const auto& id : group.tags) {
        const auto found = std::find_if(shown_.tags.begin(), shown_.tags.end(),
                                        [&](const Tag& tag) { return tag.id == id; });
        if (found != shown_.tags.end())
            tags.push_back(&*found);
    }
    if (tags.empty())
        return;
    auto* section = new FoldSection(qtext(group.id), qtext(shortened(group.name)), rows_, content_);
    connect(section, &FoldSection::headerPressed, this,
            [this, id = group.id] { flow_.toggleGroup(id); });
    for (const Tag* tag : tags)
        section->add(makeTagButton(*tag, section->body()));
    groups_.emplace(group.id, section);
    if (!compact_)
        column->addWidget(section);
}

TagButton* TagLibraryView::makeTagButton(const Tag& tag, QWidget* parent) {
    auto* button = new TagButton(tag, compact_, parent);
    const auto times = services_.texts.format(
        "tagLibraryTagTimes", {seconds(tag.defaultTimeBefore), seconds(tag.defaultTimeAfter)});
    button->setToolTip(
        qtext(tag.description.empty() ? times : shortened(tag.description) + "\n" + times));
    connect(button, &QAbstractButton::clicked, this, [this, tag] { flow_.handleTagTap(tag); });
    buttons_.emplace(tag.id, button);
    return button;
}

void TagLibraryView::showExpanded() {
    const auto& expanded = *flow_.expandedGroups;
    for (const auto& [id, section] : groups_)
        section->setExpanded(std::find(expanded.begin(), expanded.end(), id) != expanded.end());
}

void TagLibraryView::showCounts() {
    for (const auto& [id, button] : buttons_) {
        const auto found = flow_.tagCounts->find(id);
        const int count = found == flow_.tagCounts->end() ? 0 : found->second;
        if (!button->setCount(count))
            continue;
        button->setAccessibleDescription(
            qtext(services_.texts.format("tagLibraryTagCount", {std::to_string(count)})));
    }
}

void TagLibraryView::showOpenIntervals() {
    for (auto* button : openButtons_) {
        openFlow_->removeWidget(button);
        leaveFocus(button);
        button->hide();
        button->deleteLater();  // deleted later, because it may be the button that was pressed
    }
    openButtons_.clear();
    for (const auto& entry : *flow_.activeIntervalTags) {
        auto* button = new TagButton(entry.tag, compact_, open_);
        button->setObjectName("open." + button->objectName());
        button->setAccessibleName(qtext(
            services_.texts.format("tagLibraryEndInterval", {utf8Text(button->accessibleName())})));
        connect(button, &QAbstractButton::clicked, this,
                [this, tag = entry.tag] { flow_.handleTagTap(tag); });
        openFlow_->addWidget(button);
        button->show();
        openButtons_.push_back(button);
    }
    open_->setVisible(!openButtons_.empty());
    showIntervals();
    showEditorMode();
}

void TagLibraryView::showIntervals() {
    const double now = services_.player.currentTime();
    const auto show = [&](TagButton* button) {
        const auto& open = *flow_.activeIntervalTags;
        const auto found = std::find_if(open.begin(), open.end(), [&](const auto& entry) {
            return entry.tag.id == button->tag().id;
        });
        const QString before = button->runningTime();
        button->setRunningTime(found == open.end() ? std::nullopt
                                                   : std::optional(now - found->startTime));
        if (const QString& time = button->runningTime(); time != before)
            tellFigure(button, time.isEmpty() ? QString()
                                              : qtext(services_.texts.format(
                                                    "tagLibraryRunningTime", {utf8Text(time)})));
    };
    for (const auto& [id, button] : buttons_)
        if (button->isCheckable())
            show(button);
    for (auto* button : openButtons_)
        show(button);
}

void TagLibraryView::showTimeEvents() {
    for (const auto& [id, chip] : chips_)
        chip->setArmed(services_.tagLibrary.selectedTimeEvents->contains(id));
}

void TagLibraryView::showEditorMode() {
    const bool enabled = !*flow_.isEditorModeActive;
    for (const auto& [id, button] : buttons_)
        button->setEnabled(enabled);
    for (auto* button : openButtons_)
        button->setEnabled(enabled);
    for (const auto& [id, chip] : chips_)
        chip->setEnabled(enabled);
}

}  // namespace tembrix
