#pragma once

#include <QAbstractButton>
#include <QVariantAnimation>

#include "core/records/annotation_records.h"

namespace tembrix {

// The button of a time event. It stays pressed while the event is armed for the next stamps.
class TimeEventChip final : public QAbstractButton {
    Q_OBJECT
  public:
    TimeEventChip(const TimeEvent& event, bool compact, QWidget* parent = nullptr);

    void setArmed(bool armed);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void nextCheckState() override {}  // the checked state is set by the view

  private:
    QVariantAnimation scale_;
    int height_;
    int mark_;
};

}  // namespace tembrix
