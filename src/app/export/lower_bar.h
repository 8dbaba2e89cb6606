#pragma once

#include <string_view>

#include "ports/texts.h"

#include "app/widgets/notice_bar.h"

namespace tembrix {

// A notice that lies over the lower edge of its host.
class LowerBar : public NoticeBar {
    Q_OBJECT
  public:
    LowerBar(const Texts& texts, std::string_view name, std::string_view dismissKey, QWidget* host);

    // Moves the bar to its place, over what lies there. It must have a message.
    void place();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tembrix
