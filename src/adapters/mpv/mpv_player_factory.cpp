#include "adapters/mpv/mpv_player_factory.h"

#include <QCoreApplication>
#include <QWidget>

#include "adapters/mpv/mpv_gl_surface.h"
#include "adapters/mpv/mpv_image_surface.h"
#include "adapters/mpv/mpv_player.h"
#include "adapters/mpv/mpv_stage.h"
#include "adapters/mpv/quiet_libraries.h"

namespace tembrix {

void MpvPlayerFactory::prepareApplication() {
    silenceLibraries();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}

MpvPlayerFactory::MpvPlayerFactory(Media& media, std::optional<MpvDrawing> drawing)
    : media_(media), stage_(std::make_shared<MpvStage>(drawing ? *drawing : suitableDrawing())) {}

std::unique_ptr<Player> MpvPlayerFactory::open(const std::filesystem::path& file) {
    return std::make_unique<MpvPlayer>(file, media_, stage_);
}

QWidget* MpvPlayerFactory::makeSurface(QWidget* parent) const {
    if (stage_->drawing() == MpvDrawing::openGl)
        return new MpvGlSurface(stage_, parent);
    return new MpvImageSurface(stage_, parent);
}

}  // namespace tembrix
