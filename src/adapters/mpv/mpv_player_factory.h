#pragma once

#include <memory>
#include <optional>

#include "ports/media.h"
#include "ports/player.h"

#include "adapters/mpv/mpv_canvas.h"

class QWidget;

namespace tembrix {

class MpvStage;

// Opens videos on libmpv and makes the surfaces on which the newest of them shows.
class MpvPlayerFactory final : public PlayerFactory {
  public:
    // Once, before the QApplication is made: pictures are shared between OpenGL contexts.
    static void prepareApplication();

    // Pictures are drawn in the way that suits the display, or in the way given.
    explicit MpvPlayerFactory(Media& media, std::optional<MpvDrawing> drawing = {});

    std::unique_ptr<Player> open(const std::filesystem::path& file) override;

    // A surface outlives players and comes before or after them; without one it is black.
    QWidget* makeSurface(QWidget* parent) const;

  private:
    Media& media_;
    std::shared_ptr<MpvStage> stage_;
};

}  // namespace tembrix
