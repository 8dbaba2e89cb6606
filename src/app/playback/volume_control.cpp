#include "app/playback/volume_control.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>

#include "ports/texts.h"

#include "app/commands/command_button.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/translated.h"
#include "core/commands/command_table.h"
#include "core/playback/playback_sound.h"
#include "core/settings/settings.h"

namespace tembrix {

namespace {

constexpr int sliderWidth = 80;

const char* iconName(const SettingsValues& values) {
    if (values.muted || values.volume == 0)
        return "audio-volume-muted";
    return values.volume < 50 ? "audio-volume-low" : "audio-volume-high";
}

}  // namespace

VolumeControl::VolumeControl(const PlayerServices& services, QWidget* parent)
    : QWidget(parent),
      settings_(services.settings),
      mute_(makeCommandButton(services.commands, Command::mute, services.texts, "audio-volume-high",
                              this)),
      slider_(new QSlider(Qt::Horizontal, this)) {
    mute_->setCheckable(true);
    slider_->setRange(0, 100);
    slider_->setSingleStep(5);
    slider_->setPageStep(PlaybackSound::step);
    slider_->setFixedWidth(sliderWidth);
    slider_->setFocusPolicy(Qt::TabFocus);
    showText(slider_, services.texts, "videoControlVolume", &QWidget::toolTip,
             &QWidget::setToolTip);
    nameControl(slider_, services.texts, "videoControlVolume");
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme::unit);
    row->addWidget(mute_);
    row->addWidget(slider_);
    connect(slider_, &QSlider::valueChanged, this,
            [this](int percent) { setVolume(settings_, percent); });
    subscription_ = settings_.values.observe([this](const SettingsValues&) { showVolume(); });
    showVolume();
}

void VolumeControl::showVolume() {
    const SettingsValues& values = *settings_.values;
    const QSignalBlocker quiet(slider_);
    slider_->setValue(values.volume);
    mute_->setChecked(values.muted);
    mute_->setIcon(theme::icon(iconName(values)));
}

}  // namespace tembrix
