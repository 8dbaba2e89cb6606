#include "app/playback/video_player_view.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "ports/player.h"

#include "app/playback/player_control_panel.h"
#include "app/playback/volume_control.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/focus_rest.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"
#include "core/playback/video_player_manager.h"

namespace tembrix {

namespace {

const char* textKey(const Error& error) {
    if (error.domain == "player" && error.code == static_cast<int>(PlayerFailure::vanished))
        return "videoPlayerVanished";
    if (error.domain == "player" && error.code == static_cast<int>(PlayerFailure::brokeOff))
        return "videoPlayerBrokeOff";
    if (error.domain == "player" && error.code == static_cast<int>(PlayerFailure::noVideo))
        return "videoPlayerNoVideo";
    return "videoPlayerCannotPlay";
}

}  // namespace

VideoPlayerView::VideoPlayerView(const PlayerServices& services, QWidget* parent)
    : QWidget(parent), services_(services), failure_(new QLabel(this)) {
    nameControl(this, services.texts, "video");
    restFocusOn(this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    QWidget* picture = services.makeVideoSurface(this);
    nameControl(picture, services.texts, "videoPlayerPicture");
    tellRole(picture, QAccessible::Graphic);
    picture->setMinimumSize(160, 90);
    picture->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    column->addWidget(picture, 1);

    failure_->setTextFormat(Qt::PlainText);
    failure_->setWordWrap(true);
    failure_->setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::spacing);
    failure_->setObjectName("videoPlayerFailure");
    tellRole(failure_, QAccessible::AlertMessage);
    setLook(failure_, LabelLook::warning);
    failure_->hide();
    column->addWidget(failure_);

    auto* bar = new QFrame(this);
    bar->setProperty("look", "panel");
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(theme::margin, theme::unit, theme::margin, theme::unit);
    row->addStretch(1);
    row->addWidget(makePlayerControlPanel(services.player, services.commands, services.texts, bar));
    row->addSpacing(theme::spacing);
    row->addWidget(new VolumeControl(services, bar));
    row->addStretch(1);
    column->addWidget(bar);

    subscriptions_.push_back(
        services.player.failed.observe([this](const Error& error) { showFailure(error); }));
    followLanguage(this, services.texts, [this] { showFailureText(); });
    subscriptions_.push_back(
        services.player.hasPlayer.observe([this](const bool&) { failure_->hide(); }));
}

void VideoPlayerView::showFailure(const Error& error) {
    failureKey_ = textKey(error);
    showFailureText();
    failure_->show();
}

void VideoPlayerView::showFailureText() {
    if (!failureKey_)
        return;
    failure_->setText(qtext(services_.texts.text(failureKey_)));
    failure_->setAccessibleName(failure_->text());
}

}  // namespace tembrix
