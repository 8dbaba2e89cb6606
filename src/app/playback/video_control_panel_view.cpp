#include "app/playback/video_control_panel_view.h"

#include <QAction>
#include <QActionGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "base/time_text.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/tabular_label.h"
#include "core/playback/video_player_manager.h"

namespace tembrix {

namespace {

QString speedText(double speed) {
    return QString::number(speed, 'f', 2);
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
    addSeekButton("videoControlBackward10", "media-seek-backward", "10s",
                  std::move(actions.seekBackward10));
    addSeekButton("videoControlBackward5", "media-seek-backward", "5s",
                  std::move(actions.seekBackward5));
    addPlayPause(std::move(actions.togglePlayPause));
    addSeekButton("videoControlForward5", "media-seek-forward", "5s",
                  std::move(actions.seekForward5));
    addSeekButton("videoControlForward10", "media-seek-forward", "10s",
                  std::move(actions.seekForward10));
    addSpeedMenu(actions.changeSpeed);
    addTimes();
}

void VideoControlPanelView::addSeekButton(const char* key, const char* icon, const char* title,
                                          std::function<void()> action) {
    QToolButton* button = makeIconButton(texts_, key, icon, controls_);
    button->setText(title);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    connect(button, &QToolButton::clicked, this, std::move(action));
    buttons_->addWidget(button);
}

void VideoControlPanelView::addPlayPause(std::function<void()> action) {
    playPause_ = makeIconButton(texts_, "videoControlPlayPause", "media-playback-start", controls_);
    connect(playPause_, &QToolButton::clicked, this, std::move(action));
    buttons_->addWidget(playPause_);
}

void VideoControlPanelView::addSpeedMenu(const std::function<void(double)>& action) {
    speed_ = new QToolButton(controls_);
    speed_->setPopupMode(QToolButton::InstantPopup);
    speed_->setFocusPolicy(Qt::StrongFocus);
    speed_->setToolTip(qtext(texts_.text("videoControlSpeed")));
    nameControl(speed_, texts_, "videoControlSpeed");
    auto* menu = new QMenu(speed_);
    auto* group = new QActionGroup(menu);
    for (const double speed : VideoPlayerManager::speeds) {
        QAction* entry = menu->addAction(speedText(speed) + "x");
        entry->setCheckable(true);
        entry->setData(speed);
        group->addAction(entry);
        connect(entry, &QAction::triggered, this, [action, speed] { action(speed); });
    }
    speed_->setMenu(menu);
    buttons_->addSpacing(theme::unit);
    buttons_->addWidget(speed_);
    setSpeed(1.0);
}

void VideoControlPanelView::addTimes() {
    now_ = new TabularLabel(this);
    now_->setFont(theme::font(theme::timeCodeSize, QFont::Medium));
    nameControl(now_, texts_, "videoControlTimeNow");
    whole_ = new TabularLabel(this);
    whole_->setColor(theme::secondaryText);
    nameControl(whole_, texts_, "videoControlTimeWhole");
    row_->addWidget(now_);
    row_->addWidget(whole_);
    setTimes(0, 0);
}

void VideoControlPanelView::setPlaying(bool playing) {
    playPause_->setIcon(theme::icon(playing ? "media-playback-pause" : "media-playback-start"));
}

void VideoControlPanelView::setSpeed(double speed) {
    speed_->setText(speedText(speed));
    speed_->setAccessibleDescription(speed_->text());
    for (QAction* entry : speed_->menu()->actions())
        entry->setChecked(entry->data().toDouble() == speed);
}

void VideoControlPanelView::setTimes(double now, double whole) {
    const auto text = [](double seconds) { return qtext(formatTimeLong(std::max(seconds, 0.0))); };
    now_->setText(text(now));
    whole_->setText("/ " + text(whole));
}

void VideoControlPanelView::setOperable(bool operable) {
    controls_->setEnabled(operable);
}

}  // namespace tembrix
