#pragma once

#include <memory>
#include <optional>

#include "ports/media.h"
#include "ports/player.h"

#include "adapters/mpv/mpv_canvas.h"

class QWidget;

namespace tembrix {

class MpvStage;

// Opens videos with libmpv and makes the surfaces that show the newest of them.
class MpvPlayerFactory final : public PlayerFactory {
  public:
    // Must be called once, before the QApplication is made: lets OpenGL contexts share pictures and
    // silences the libraries that would print to the terminal.
    static void prepareApplication();

    // Without `drawing`, pictures are drawn in the way that suits the display.
    explicit MpvPlayerFactory(Media& media, std::optional<MpvDrawing> drawing = {});

    std::unique_ptr<Player> open(const std::filesystem::path& file) override;

    // A surface may be made before or after players and may outlive them; without a player it is
    // black.
    QWidget* makeSurface(QWidget* parent) const;

  private:
    Media& media_;
    std::shared_ptr<MpvStage> stage_;
};

}  // namespace tembrix
