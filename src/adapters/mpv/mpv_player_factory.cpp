#include "adapters/mpv/mpv_player_factory.h"

#include <QCoreApplication>
#include <QOpenGLContext>
#include <QPalette>
#include <QWidget>

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
    // A widget of OpenGL does not survive a display without it.
    if (QOpenGLContext().create())
        return new MpvVideoSurface(stage_, parent);
    auto* black = new QWidget(parent);
    black->setPalette(QPalette(Qt::black));
    black->setAutoFillBackground(true);
    return black;
}

}  // namespace tembrix
