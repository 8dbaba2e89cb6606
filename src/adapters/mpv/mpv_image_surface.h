#pragma once

#include <QWidget>
#include <memory>

#include "base/signal.h"

namespace tembrix {

class MpvStage;

// Shows the pictures of the stage's player, scaled to fit on black, if they are drawn in memory.
class MpvImageSurface final : public QWidget {
    Q_OBJECT
  public:
    explicit MpvImageSurface(std::shared_ptr<MpvStage> stage, QWidget* parent = nullptr);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    std::shared_ptr<MpvStage> stage_;
    Subscription changes_;
};

}  // namespace tembrix
