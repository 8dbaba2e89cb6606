#include "adapters/mpv/mpv_player_factory.h"

#include <QCoreApplication>

#include "adapters/mpv/mpv_player.h"
#include "adapters/mpv/mpv_stage.h"
#include "adapters/mpv/mpv_video_surface.h"

namespace tembrix {

void MpvPlayerFactory::prepareApplication() {
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}

MpvPlayerFactory::MpvPlayerFactory(Media& media)
    : media_(media), stage_(std::make_shared<MpvStage>()) {}

std::unique_ptr<Player> MpvPlayerFactory::open(const std::filesystem::path& file) {
    return std::make_unique<MpvPlayer>(file, media_, stage_);
}

QWidget* MpvPlayerFactory::makeSurface(QWidget* parent) const {
    return new MpvVideoSurface(stage_, parent);
}

}  // namespace tembrix
