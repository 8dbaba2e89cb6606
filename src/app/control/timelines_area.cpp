#include "app/control/timelines_area.h"

#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "ports/texts.h"

#include "app/commands/command_button.h"
#include "app/control/line_names_model.h"
#include "app/control/line_names_view.h"
#include "app/control/timeline_canvas.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"
#include "core/commands/command_table.h"
#include "core/control/playhead_follow.h"
#include "core/control/timeline_axis.h"
#include "core/control/timeline_cursor.h"
#include "core/control/timeline_texts.h"
#include "core/playback/video_player_manager.h"
#include "core/records/markup_mode.h"
#include "core/records/timeline_records.h"

namespace tembrix {

namespace {

constexpr double disabledOpacity = 0.5;

// Dims the widgets beneath it with a half-transparent background. A graphics effect on the area
// would not cover children that paint themselves opaque.
class Veil final : public QWidget {
  public:
    explicit Veil(QWidget* parent) : QWidget(parent) { hide(); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setOpacity(1 - disabledOpacity);
        painter.fillRect(rect(), theme::background);
    }
};

QLabel* makeNamesHeader(const Texts& texts, QWidget* parent) {
    auto* header = makeLabel(texts, "timelines", LabelLook::caption, parent);
    header->setFixedHeight(static_cast<int>(TimelineMetrics::headerHeight));
    header->setContentsMargins(theme::spacing, 0, theme::spacing, 0);
    return header;
}

}  // namespace

TimelinesArea::TimelinesArea(const ControlServices& services, TimelineEditingModel& model,
                             QWidget* parent)
    : QWidget(parent),
      services_(services),
      model_(model),
      namesModel_(
          new LineNamesModel(model, services.timeline, services.tagLibrary, services.texts, this)),
      names_(new LineNamesView(model, *namesModel_, services.texts, this)),
      canvas_(new TimelineCanvas(model, services.timeline, this)),
      horizontal_(new QScrollBar(Qt::Horizontal, this)),
      vertical_(new QScrollBar(Qt::Vertical, this)),
      veil_(new Veil(this)) {
    nameControl(canvas_, services.texts, "timelineRows");
    canvas_->setDescriptions(
        {[this](const TimelineLine& line) {
             return qtext(services_.texts.format("tagLibraryTagCount",
                                                 {std::to_string(line.stamps.size())}));
         },
         [this](const TimelineStamp& stamp) {
             return qtext(stampAccessibleDetails(stamp, services_.tagLibrary, services_.texts));
         }});
    layOut();
    makeHint();

    connect(canvas_, &TimelineCanvas::axisChanged, this, &TimelinesArea::updateRanges);
    connect(canvas_, &TimelineCanvas::rowCountChanged, this, &TimelinesArea::updateRanges);
    connect(canvas_, &TimelineCanvas::cursorMoved, this, &TimelinesArea::showCursor);
    connect(canvas_, &TimelineCanvas::pinched, this, [this](double magnification, double x) {
        zoomAnchor_ = x;
        model_.magnify(magnification);
    });
    connect(canvas_, &TimelineCanvas::pinchEnded, this, [this] {
        model_.endMagnify();
        zoomAnchor_.reset();
    });
    connect(canvas_, &TimelineCanvas::draggedBeyond, this, [this](QPointF by) {
        const auto scroll = [](QScrollBar* bar, double way) {
            constexpr double furthest = 40;  // points per step
            bar->setValue(bar->value() + static_cast<int>(std::clamp(way, -furthest, furthest)));
        };
        scroll(horizontal_, by.x());
        scroll(vertical_, by.y());
    });
    connect(canvas_, &TimelineCanvas::playheadMoved, this, [this](double from, double to) {
        if (horizontal_->isSliderDown())
            return;
        if (const auto x = followPlayhead(from, to, canvas_->scrollX(), canvas_->width()))
            horizontal_->setValue(static_cast<int>(*x));
    });
    connect(canvas_, &TimelineCanvas::stampMenuRequested, this, &TimelinesArea::openStampMenu);
    connect(names_, &LineNamesView::lineMenuRequested, this, &TimelinesArea::openLineMenu);
    const auto scroll = [this] { canvas_->setScroll(horizontal_->value(), vertical_->value()); };
    connect(horizontal_, &QScrollBar::valueChanged, this, scroll);
    connect(vertical_, &QScrollBar::valueChanged, this, scroll);
    // The name column scrolls by itself while a line is dragged or selected by keyboard.
    connect(vertical_, &QScrollBar::valueChanged, names_->verticalScrollBar(),
            &QScrollBar::setValue);
    connect(names_->verticalScrollBar(), &QScrollBar::valueChanged, vertical_,
            &QScrollBar::setValue);

    subscriptions_.push_back(model.zoomChanged.observe([this] { applyZoom(); }));
    subscriptions_.push_back(services.player.currentTimeValue.observe([this](const double&) {
        canvas_->refreshAxis();  // the length of a video can become known late
        canvas_->movePlayhead();
    }));
    subscriptions_.push_back(
        services.player.hasPlayer.observe([this](const bool&) { canvas_->refreshAxis(); }));
    const auto veil = [this](const bool&) { showEnabled(); };
    subscriptions_.push_back(model.isEditorModeActive.observe(veil));
    subscriptions_.push_back(model.isScreenshotDisplayActive.observe(veil));
    showEnabled();
}

void TimelinesArea::layOut() {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    constexpr int column = static_cast<int>(TimelineMetrics::nameColumnWidth);
    names_->setFixedWidth(column);
    QLabel* header = makeNamesHeader(services_.texts, this);
    header->setFixedWidth(column);
    grid->addWidget(header, 0, 0);
    grid->addWidget(names_, 1, 0);
    grid->addWidget(makeSeparator(Qt::Vertical, this), 0, 1, 2, 1);
    grid->addWidget(canvas_, 0, 2, 2, 1);
    grid->addWidget(vertical_, 1, 3);
    grid->addWidget(horizontal_, 2, 2);
    grid->setRowStretch(1, 1);
    grid->setColumnStretch(2, 1);
    for (QScrollBar* bar : {horizontal_, vertical_})
        bar->setSingleStep(static_cast<int>(TimelineMetrics::rowHeight));
}

void TimelinesArea::makeHint() {
    hint_ = new QWidget(this);
    auto* column = new QVBoxLayout(hint_);
    column->setSpacing(theme::margin);
    hintText_ = new QLabel(hint_);
    hintText_->setTextFormat(Qt::PlainText);
    hintText_->setAlignment(Qt::AlignCenter);
    hintText_->setObjectName("timelinesEmpty");
    setLook(hintText_, LabelLook::secondary);
    hintButton_ = makeButton(services_.texts, "timelinesEmptyAdd", ButtonLook::accented, hint_);
    hintButton_->setFocusPolicy(Qt::TabFocus);
    bindButton(hintButton_, services_.commands, Command::addLine, services_.texts);
    column->addStretch(1);
    column->addWidget(hintText_);
    column->addWidget(hintButton_, 0, Qt::AlignHCenter);
    column->addStretch(1);
    connect(canvas_, &TimelineCanvas::rowCountChanged, this, &TimelinesArea::showHint);
    subscriptions_.push_back(model_.markupMode.observe([this](const MarkupMode&) { showHint(); }));
    followLanguage(this, services_.texts, [this] { showHint(); });
}

void TimelinesArea::showHint() {
    const bool empty = model_.rows().size() == 0 ||
                       (model_.rows().size() == 1 && model_.rows()[0].line->id == drawingsLineId());
    const bool ofTag = *model_.markupMode == MarkupMode::tagBased;
    hintText_->setText(
        qtext(services_.texts.text(ofTag ? "timelinesEmptyOfTag" : "timelinesEmpty")));
    hintText_->setAccessibleName(hintText_->text());
    hintButton_->setVisible(!ofTag);
    const int used = static_cast<int>(TimelineMetrics::headerHeight + model_.rows().height());
    hint_->setGeometry(canvas_->geometry().adjusted(0, used, 0, 0));
    if (!empty)
        leaveFocus(hint_);
    hint_->setVisible(empty);
    hint_->raise();
    veil_->raise();
}

void TimelinesArea::updateRanges() {
    const auto set = [](QScrollBar* bar, double content, double room) {
        bar->setPageStep(static_cast<int>(room));
        // The zoom has no upper limit, but the scroll bar's range has.
        constexpr double longest = 1e9;
        bar->setRange(0, static_cast<int>(std::clamp(std::ceil(content - room), 0.0, longest)));
        bar->setVisible(bar->maximum() > 0);
    };
    set(horizontal_, canvas_->axis().width, canvas_->width());
    set(vertical_, model_.rows().height(), canvas_->height() - TimelineMetrics::headerHeight);
}

void TimelinesArea::applyZoom() {
    const TimelineAxis before = canvas_->axis();
    const double scroll = canvas_->scrollX();
    // The point under the pointer keeps its position. Without a pinch it is the playhead if that is
    // in view, else the center.
    double anchor = canvas_->width() / 2.0;
    const double playhead = canvas_->playheadX() - scroll;
    if (zoomAnchor_)
        anchor = *zoomAnchor_;
    else if (playhead >= 0 && playhead <= canvas_->width())
        anchor = playhead;
    const double time = before.time(scroll + anchor);
    canvas_->refreshAxis();
    const double place = std::min(canvas_->axis().x(time) - anchor, horizontal_->maximum() * 1.0);
    horizontal_->setValue(static_cast<int>(std::lround(place)));
}

void TimelinesArea::showCursor() {
    const TimelineCursor& cursor = *model_.cursor;
    const auto row = cursor.line ? model_.rows().indexOfLine(*cursor.line) : std::nullopt;
    if (!row)
        return;
    const auto reveal = [](QScrollBar* bar, double from, double to) {
        if (from < bar->value())
            bar->setValue(static_cast<int>(from));
        else if (to > bar->value() + bar->pageStep())
            bar->setValue(static_cast<int>(std::min(from, to - bar->pageStep())));
    };
    const double top = static_cast<double>(*row) * TimelineMetrics::rowHeight;
    reveal(vertical_, top, top + TimelineMetrics::rowHeight);
    if (const auto hit = cursor.stamp ? model_.rows().findStamp(*cursor.stamp) : std::nullopt) {
        const QRectF area = canvas_->stampArea(hit->row, *hit->stamp);
        const double left = area.left() + canvas_->scrollX();
        const double room = 3 * TimelineMetrics::gripWidth;
        reveal(horizontal_, left - room,
               left + std::min(area.width() + room, canvas_->width() - 2 * room));
    }
}

void TimelinesArea::showEnabled() {
    const bool enabled = model_.timelinesEnabled();
    setEnabled(enabled);
    veil_->setVisible(!enabled);
    veil_->raise();
}

QMenu* TimelinesArea::makeMenu() {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    return menu;
}

void TimelinesArea::openStampMenu(const Uuid& line, const Uuid& stamp, QPoint at) {
    const auto found = services_.timeline.findStamp(stamp);
    if (!found)
        return;
    QMenu* menu = makeMenu();
    menu->setObjectName("stampMenu");
    bool told = false;
    for (const auto& item : stampMenu(*found->stamp, services_.tagLibrary, services_.texts)) {
        if (item.action && !told) {
            menu->addSeparator();
            told = true;
        }
        QString text = qtext(item.text);
        QAction* entry = menu->addAction(text.replace('&', "&&"));
        entry->setObjectName(qtext(item.key));
        if (!item.action) {
            entry->setEnabled(false);
            continue;
        }
        connect(entry, &QAction::triggered, this, [this, line, stamp, action = *item.action] {
            if (action == StampMenuAction::deleteTag)
                model_.removeStamp(line, stamp);
            else
                model_.editing.request(line, stamp,
                                       action == StampMenuAction::editLabels
                                           ? StampEditSheetType::lables
                                           : StampEditSheetType::timeEvents);
        });
    }
    menu->popup(at);
}

void TimelinesArea::openLineMenu(const Uuid& line, QPoint at) {
    QMenu* menu = makeMenu();
    menu->setObjectName("lineMenu");
    for (const auto& item : lineMenu(line, *model_.markupMode, services_.texts)) {
        QAction* entry = menu->addAction(qtext(item.text));
        entry->setObjectName(qtext(item.key));
        entry->setEnabled(item.enabled);
        connect(entry, &QAction::triggered, this, [this, line, action = item.action] {
            if (action == LineMenuAction::editName)
                Q_EMIT editNameRequested(line);
            else
                services_.timeline.deleteLine(line);
        });
    }
    menu->popup(at);
}

void TimelinesArea::wheelEvent(QWheelEvent* event) {
    const QPoint pixels =
        event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
    // With Shift, a wheel that only turns vertically scrolls the axis.
    const bool sideways = event->modifiers() & Qt::ShiftModifier;
    horizontal_->setValue(horizontal_->value() - (sideways ? pixels.x() + pixels.y() : pixels.x()));
    if (!sideways)
        vertical_->setValue(vertical_->value() - pixels.y());
    event->accept();
}

void TimelinesArea::resizeEvent(QResizeEvent*) {
    veil_->setGeometry(rect());
    showHint();
    updateRanges();
}

}  // namespace tembrix
