#pragma once

#include <QWidget>

#include "ports/texts.h"

#include "core/export/export_run.h"

class QGraphicsOpacityEffect;
class QLabel;
class QPropertyAnimation;

namespace tembrix {

// Covers the middle of a window during an export: a ring that shows the progress, how many cuts are
// done, the time left and a cancel button. The rest of the window stays usable.
class WaitingPanel final : public QWidget {
    Q_OBJECT
  public:
    WaitingPanel(const Texts& texts, QWidget* host);

    void appear();
    void vanish();  // fades out, then hides
    void showStatus(const ExportStatus& status);

  Q_SIGNALS:
    void canceled();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    class Ring;
    void fade(double to);
    void center();

    void showWords();

    const Texts& texts_;
    ExportStatus status_;
    Ring* ring_;
    QLabel* step_;  // what is done now
    QLabel* left_;  // the time left
    QGraphicsOpacityEffect* opacity_;
    QPropertyAnimation* fading_;
};

}  // namespace tembrix
