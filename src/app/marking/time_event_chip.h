#pragma once

#include <QAbstractButton>
#include <QVariantAnimation>

#include "core/records/annotation_records.h"

namespace tembrix {

// A time event of the panel: stays pressed while it is armed for the next stamps.
class TimeEventChip final : public QAbstractButton {
    Q_OBJECT
  public:
    explicit TimeEventChip(const TimeEvent& event, QWidget* parent = nullptr);

    void setArmed(bool armed);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void nextCheckState() override {}  // what is armed is the tag library's to tell

  private:
    QVariantAnimation scale_;
};

}  // namespace tembrix
