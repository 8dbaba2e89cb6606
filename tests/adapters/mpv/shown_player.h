#pragma once

#include <QImage>
#include <QOpenGLWidget>
#include <QTest>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "adapters/mpv/mpv_player_factory.h"
#include "fixtures/frame_code.h"
#include "fixtures/variants.h"

namespace tembrix {

// A real player with a surface on the display, and helpers to examine both.
struct ShownPlayer {
    FfmpegMedia media;
    MpvPlayerFactory factory;
    std::unique_ptr<QWidget> surface;
    std::unique_ptr<Player> player;

    explicit ShownPlayer(const std::filesystem::path& file = {},
                         MpvDrawing drawing = MpvDrawing::openGl)
        : factory(media, drawing), surface(factory.makeSurface(nullptr)) {
        surface->resize(320, 180);
        surface->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(surface.get()));
        if (!file.empty())
            player = factory.open(file);
    }

    // Seeks and waits for the end of the seek.
    bool seek(double seconds) {
        std::optional<bool> end;
        player->seek(seconds, [&end](bool finished) { end = finished; });
        EXPECT_TRUE(QTest::qWaitFor([&end] { return end.has_value(); }, 10000));
        return end.value_or(false);
    }

    // The picture shown by the surface.
    ImageBuffer picture() const {
        auto* gl = qobject_cast<QOpenGLWidget*>(surface.get());
        const QImage image = (gl ? gl->grabFramebuffer() : surface->grab().toImage())
                                 .convertToFormat(QImage::Format_RGBA8888_Premultiplied);
        ImageBuffer buffer(image.width(), image.height());
        for (int y = 0; y < buffer.height; ++y)
            std::memcpy(buffer.row(y), image.constScanLine(y), buffer.stride());
        return buffer;
    }
    int number() const { return readFrameNumber(picture()).value_or(-1); }
};

}  // namespace tembrix
