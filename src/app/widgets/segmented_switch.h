#pragma once

#include <QWidget>
#include <initializer_list>
#include <string_view>

#include "ports/texts.h"

class QButtonGroup;

namespace tembrix {

// A row of joined buttons, one of which is checked, for example a filter or a mode.
class SegmentedSwitch final : public QWidget {
    Q_OBJECT
  public:
    // One segment per text key; initially the first is checked.
    SegmentedSwitch(const Texts& texts, std::initializer_list<std::string_view> keys,
                    QWidget* parent = nullptr);

    int chosen() const;
    void choose(int index);  // emits no signal

  Q_SIGNALS:
    void chosenByUser(int index);

  private:
    QButtonGroup* group_;
};

}  // namespace tembrix
