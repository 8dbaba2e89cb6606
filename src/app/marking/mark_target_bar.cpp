#include "app/marking/mark_target_bar.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QStyle>
#include <QToolButton>
#include <optional>
#include <string>
#include <utility>

#include "base/color.h"
#include "base/shortened.h"

#include "ports/texts.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/control/timeline_texts.h"
#include "core/marking/mark_target.h"
#include "core/marking/marking_flow.h"
#include "core/records/markup_mode.h"

namespace tembrix {
namespace {

constexpr int dotSize = 12;
constexpr int buttonPadding = 46;  // of the text: the dot, the arrow and the space around them

// The color of a line; a ring for a line without a color.
QIcon dot(const std::string& colorHex) {
    constexpr double ratio = 2;
    QPixmap picture(QSize(dotSize, dotSize) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    if (colorHex.empty()) {
        painter.setPen(QPen(theme::secondaryText, 1.5));
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme::toQColor(parseHexColor(colorHex)));
    }
    painter.drawEllipse(QRectF(1, 1, dotSize - 2, dotSize - 2));
    return picture;
}

}  // namespace

MarkTargetBar::MarkTargetBar(const TagPanelServices& services, MarkingFlow& flow, QWidget* parent)
    : QWidget(parent),
      services_(services),
      flow_(flow),
      caption_(makeLabel(services.texts, "markTarget", LabelLook::caption, this)),
      button_(new QToolButton(this)),
      menu_(new QMenu(button_)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme::spacing);
    caption_->setWordWrap(false);
    caption_->setObjectName("markTargetCaption");
    row->addWidget(caption_);
    nameControl(button_, services.texts, "markTarget");
    nameControl(menu_, services.texts, "markTarget");
    menu_->setObjectName("markTargetMenu");
    button_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button_->setIconSize({dotSize, dotSize});
    button_->setPopupMode(QToolButton::InstantPopup);
    button_->setFocusPolicy(Qt::TabFocus);
    button_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    button_->setProperty("look", "field");
    button_->setMenu(menu_);
    row->addWidget(button_, 1);
    connect(menu_, &QMenu::aboutToShow, this, &MarkTargetBar::fillMenu);

    const auto show = [this](const auto&) { showTarget(); };
    subscriptions_.push_back(services.timeline.lines.observe(show));
    subscriptions_.push_back(services.timeline.selectedLineID.observe(show));
    subscriptions_.push_back(flow.markupMode.observe(show));
    bindCommands();
    followLanguage(this, services.texts, [this] {
        shown_ = {};
        showTarget();
    });
}

void MarkTargetBar::setCompact(bool compact) {
    caption_->setVisible(!compact);
}

void MarkTargetBar::bindCommands() {
    const auto step = [this](Command command, int by) {
        subscriptions_.push_back(services_.commands.bind(
            command, {[this, by] {
                          if (const auto line = neighborLine(services_.timeline, by))
                              services_.timeline.selectLine(*line);
                      },
                      [this, by] {
                          return *flow_.markupMode == MarkupMode::standard &&
                                 neighborLine(services_.timeline, by);
                      },
                      {}}));
    };
    step(Command::previousLine, -1);
    step(Command::nextLine, +1);
    subscriptions_.push_back(
        services_.commands.bind(Command::chooseLine, {[this] { openMenu(); }, {}, {}}));
}

void MarkTargetBar::showTarget() {
    using Kind = MarkTarget::Kind;
    const MarkTarget target = markTarget(services_.timeline, *flow_.markupMode);
    const auto& texts = services_.texts;
    std::string text;
    switch (target.kind) {
        case Kind::nowhere:
            text = texts.text("markTargetNowhere");
            break;
        case Kind::drawings:
            text = texts.format("markTargetDrawings", {shortened(target.line->name)});
            break;
        case Kind::line:
            text = shortened(target.line->name);
            break;
        case Kind::lineOfTag:
            text = texts.text("commandTagBasedMode");
            break;
    }
    const std::string color =
        target.line ? lineColorHex(*target.line, services_.tagLibrary) : std::string();
    const bool doubtful = target.isDoubtful();
    Shown now{qtext(text), color, doubtful};
    if (now == shown_)  // as after nearly every mark
        return;
    shown_ = std::move(now);
    if (button_->property("doubtful").toBool() != doubtful) {
        button_->setProperty("doubtful", doubtful);
        button_->style()->unpolish(button_);
        button_->style()->polish(button_);
    }
    button_->setIcon(doubtful ? theme::icon("data-warning", theme::warning) : dot(color));
    button_->setToolTip(qtext(texts.text("markTarget")) + ": " + shown_.text);
    button_->setAccessibleDescription(shown_.text);
    elide();
}

void MarkTargetBar::elide() {
    button_->setText(button_->fontMetrics()
                         .elidedText(shown_.text, Qt::ElideRight, button_->width() - buttonPadding)
                         .replace('&', "&&"));
}

void MarkTargetBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    elide();
}

void MarkTargetBar::fillMenu() {
    menu_->clear();
    auto* group = new QActionGroup(menu_);
    const MarkTarget target = markTarget(services_.timeline, *flow_.markupMode);
    const auto add = [&](const QString& name, bool chosen) {
        QAction* entry = menu_->addAction(QString(name).replace('&', "&&"));
        entry->setCheckable(true);
        entry->setChecked(chosen);
        group->addAction(entry);
        return entry;
    };
    for (const auto& line : *services_.timeline.lines) {
        QAction* entry =
            add(qtext(shortened(line->name)), target.line && target.line->id == line->id);
        entry->setObjectName(qtext(line->id.text()));
        connect(entry, &QAction::triggered, this, [this, id = line->id] {
            if (*flow_.markupMode != MarkupMode::standard)
                services_.commands.run(Command::standardMode);
            services_.timeline.selectLine(id);
        });
        if (target.line && target.line->id == line->id)
            menu_->setActiveAction(entry);
    }
    menu_->addSeparator();
    QAction* ofTag = add(qtext(services_.texts.text("commandTagBasedMode")),
                         target.kind == MarkTarget::Kind::lineOfTag);
    ofTag->setObjectName("commandTagBasedMode");
    connect(ofTag, &QAction::triggered, this,
            [this] { services_.commands.run(Command::tagBasedMode); });
    QAction* another = menu_->addAction(
        theme::icon("list-add"), qtext(services_.texts.text("fullControlButtonAddTimeline")) + "…");
    another->setObjectName("fullControlButtonAddTimeline");
    another->setEnabled(services_.commands.isEnabled(Command::addLine));
    connect(another, &QAction::triggered, this,
            [this] { services_.commands.run(Command::addLine); });
}

void MarkTargetBar::openMenu() {
    menu_->popup(button_->mapToGlobal(button_->rect().bottomLeft()));
}

}  // namespace tembrix
