#pragma once

#include <QOpenGLTextureBlitter>
#include <QOpenGLWidget>
#include <memory>

#include "base/signal.h"

namespace tembrix {

class MpvStage;

// Shows the pictures of the stage's player, scaled to fit on black. It only paints finished
// textures and repaints only for a new one.
class MpvGlSurface final : public QOpenGLWidget {
    Q_OBJECT
  public:
    explicit MpvGlSurface(std::shared_ptr<MpvStage> stage, QWidget* parent = nullptr);
    ~MpvGlSurface() override;

  protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;

  private:
    void releaseGL();

    std::shared_ptr<MpvStage> stage_;
    QOpenGLTextureBlitter blitter_;
    Subscription changes_;
};

}  // namespace tembrix
