#pragma once

#include <QWidget>

#include "ports/texts.h"

class QGraphicsOpacityEffect;
class QPropertyAnimation;

namespace tembrix {

// Covers the middle of a window during an export: a ring that shows the progress and a cancel
// button. The rest of the window stays usable.
class WaitingPanel final : public QWidget {
    Q_OBJECT
  public:
    WaitingPanel(const Texts& texts, QWidget* host);

    void appear();
    void vanish();  // fades out, then hides
    void setProgress(float progress);

  Q_SIGNALS:
    void canceled();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    class Ring;
    void fade(double to);
    void center();

    Ring* ring_;
    QGraphicsOpacityEffect* opacity_;
    QPropertyAnimation* fading_;
};

}  // namespace tembrix
