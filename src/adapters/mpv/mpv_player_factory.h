#pragma once

#include <memory>
#include <optional>

#include "ports/media.h"
#include "ports/player.h"

#include "adapters/mpv/mpv_canvas.h"

class QWidget;

namespace tembrix {

class MpvStage;

// Opens videos with libmpv and creates the surfaces that show the video opened last.
class MpvPlayerFactory final : public PlayerFactory {
  public:
    // Must be called once, before the QApplication is created. Lets OpenGL contexts share textures
    // and silences libraries that would print to the terminal.
    static void prepareApplication();

    // Without `drawing`, the drawing method that suits the display is used.
    explicit MpvPlayerFactory(Media& media, std::optional<MpvDrawing> drawing = {});

    std::unique_ptr<Player> open(const std::filesystem::path& file) override;

    // A surface may be created before or after players and may outlive them. It is black without a
    // player.
    QWidget* makeSurface(QWidget* parent) const;

  private:
    Media& media_;
    std::shared_ptr<MpvStage> stage_;
};

}  // namespace tembrix
