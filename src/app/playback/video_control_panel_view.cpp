#include "app/playback/video_control_panel_view.h"

#include <QAction>
#include <QActionGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>
#include <algorithm>
#include <iterator>
#include <utility>

#include "base/time_text.h"

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/menu_button.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/tabular_label.h"
#include "app/widgets/translated.h"
#include "core/playback/video_player_manager.h"

namespace tembrix {

namespace {

QString speedText(double speed) {
    return QString::number(speed, 'f', 2) + "x";
}

constexpr double timeStep = 5;  // seconds by which assistive programs move

// The first speed that is offered from `speed` on, on the way there from `now`.
double offeredSpeed(double speed, double now) {
    constexpr auto& speeds = VideoPlayerManager::speeds;
    if (speed > now) {
        const auto* const found = std::lower_bound(speeds.begin(), speeds.end(), speed);
        return found == speeds.end() ? speeds.back() : *found;
    }
    const auto* const after = std::upper_bound(speeds.begin(), speeds.end(), speed);
    return after == speeds.begin() ? speeds.front() : *std::prev(after);
}

}  // namespace

VideoControlPanelView::VideoControlPanelView(const Texts& texts, VideoControlPanelActions actions,
                                             QWidget* parent)
    : QWidget(parent),
      texts_(texts),
      row_(new QHBoxLayout(this)),
      controls_(new QWidget(this)),
      buttons_(new QHBoxLayout(controls_)) {
    row_->setContentsMargins(0, 0, 0, 0);
    row_->setSpacing(theme::spacing);
    buttons_->setContentsMargins(0, 0, 0, 0);
    buttons_->setSpacing(theme::unit / 2);
    row_->addWidget(controls_);
    seeks_[0] = addSeekButton("videoControlBackward10", "media-seek-backward",
                              std::move(actions.seekBackward10));
    seeks_[1] = addSeekButton("videoControlBackward5", "media-seek-backward",
                              std::move(actions.seekBackward5));
    addPlayPause(std::move(actions.togglePlayPause));
    seeks_[2] = addSeekButton("videoControlForward5", "media-seek-forward",
                              std::move(actions.seekForward5));
    seeks_[3] = addSeekButton("videoControlForward10", "media-seek-forward",
                              std::move(actions.seekForward10));
    addSpeedMenu(actions.changeSpeed);
    addTimes(std::move(actions.seek));
}

QToolButton* VideoControlPanelView::addSeekButton(const char* key, const char* icon,
                                                  std::function<void()> action) {
    auto* button = new QToolButton(controls_);
    button->setObjectName(key);
    button->setIcon(theme::icon(icon));
    button->setIconSize({theme::iconSize, theme::iconSize});
    button->setFocusPolicy(Qt::StrongFocus);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    connect(button, &QToolButton::clicked, this, std::move(action));
    buttons_->addWidget(button);
    return button;
}

void VideoControlPanelView::setSteps(const std::string& inner, const std::string& outer) {
    const std::array steps{&outer, &inner, &inner, &outer};
    for (std::size_t i = 0; i < seeks_.size(); ++i) {
        QToolButton* button = seeks_[i];
        button->setText(qtext(texts_.format("seconds", {*steps[i]})));
        button->setAccessibleName(
            qtext(texts_.format(utf8Text(button->objectName()), {*steps[i]})));
        button->setToolTip(button->accessibleName());
    }
}

void VideoControlPanelView::addPlayPause(std::function<void()> action) {
    playPause_ = makeIconButton(texts_, "videoControlPlayPause", "media-playback-start", controls_);
    connect(playPause_, &QToolButton::clicked, this, std::move(action));
    buttons_->addWidget(playPause_);
}

void VideoControlPanelView::addSpeedMenu(const std::function<void(double)>& action) {
    speed_ = new MenuButton(controls_);
    speed_->setPopupMode(QToolButton::InstantPopup);
    speed_->setFocusPolicy(Qt::TabFocus);
    showText(speed_, texts_, "videoControlSpeed", &QWidget::toolTip, &QWidget::setToolTip);
    nameControl(speed_, texts_, "videoControlSpeed");
    auto* menu = new QMenu(speed_);
    auto* group = new QActionGroup(menu);
    for (const double speed : VideoPlayerManager::speeds) {
        QAction* entry = menu->addAction(speedText(speed));
        entry->setCheckable(true);
        entry->setData(speed);
        group->addAction(entry);
        connect(entry, &QAction::triggered, this, [action, speed] { action(speed); });
    }
    speed_->setMenu(menu);
    buttons_->addSpacing(theme::unit);
    buttons_->addWidget(speed_);
    new AccessibleValue(
        speed_, QAccessible::ButtonMenu,
        [this] {
            return AccessibleValue::Reading{shownSpeed_, VideoPlayerManager::speeds.front(),
                                            VideoPlayerManager::speeds.back(), 0.05};
        },
        [this, action](double speed) { action(offeredSpeed(speed, shownSpeed_)); });
    setSpeed(1.0);
}

void VideoControlPanelView::addTimes(std::function<void(double)> seek) {
    now_ = new TabularLabel(this);
    now_->setFont(theme::font(theme::timeCodeSize, QFont::Medium));
    nameControl(now_, texts_, "videoControlTimeNow");
    new AccessibleValue(
        now_, QAccessible::Slider,
        [this] {
            return AccessibleValue::Reading{time_, 0, duration_, timeStep};
        },
        std::move(seek));
    whole_ = new TabularLabel(this);
    whole_->setColor(theme::secondaryText);
    nameControl(whole_, texts_, "videoControlTimeWhole");
    row_->addWidget(now_);
    row_->addWidget(whole_);
    setTimes(0, 0);
}

void VideoControlPanelView::setPlaying(bool playing) {
    tellChecked(playPause_, playing);
    playPause_->setIcon(theme::icon(playing ? "media-playback-pause" : "media-playback-start"));
}

void VideoControlPanelView::setSpeed(double speed) {
    shownSpeed_ = speed;
    speed_->setText(speedText(speed));
    speed_->setAccessibleDescription(speed_->text());
    for (QAction* entry : speed_->menu()->actions())
        entry->setChecked(entry->data().toDouble() == speed);
    AccessibleValue::of(speed_)->changed();
}

void VideoControlPanelView::setTimes(double now, double whole) {
    const auto text = [](double seconds) { return qtext(formatTimeLong(std::max(seconds, 0.0))); };
    time_ = std::max(now, 0.0);
    duration_ = std::max(whole, 0.0);
    now_->setText(text(now));
    AccessibleValue::of(now_)->changed(1);
    whole_->setText("/ " + text(whole));
}

void VideoControlPanelView::setOperable(bool operable) {
    controls_->setEnabled(operable);
}

}  // namespace tembrix
