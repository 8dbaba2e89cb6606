#include "app/export/lower_bar.h"

#include <QEvent>

#include "app/theme/theme.h"

namespace tembrix {

namespace {
constexpr int widest = 720;
}

LowerBar::LowerBar(const Texts& texts, std::string_view name, std::string_view dismissKey,
                   QWidget* host)
    : NoticeBar(texts, name, dismissKey, host) {
    host->installEventFilter(this);
}

void LowerBar::place() {
    const QSize host = parentWidget()->size();
    const int width = qMin(widest, host.width() - 2 * theme::margin);
    const int height = sizeHint().height();
    setGeometry((host.width() - width) / 2, host.height() - height - theme::margin, width, height);
    raise();
}

bool LowerBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && isVisible())
        place();
    return NoticeBar::eventFilter(watched, event);
}

}  // namespace tembrix
