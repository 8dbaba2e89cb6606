#include "app/widgets/elided_label.h"

#include <QEvent>
#include <algorithm>

namespace tembrix {

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setFullText(text);
}

void ElidedLabel::setFullText(const QString& text) {
    full_ = text;
    full_.replace('\n', ' ');
    setAccessibleName(full_);
    updateGeometry();
    elide();
}

QSize ElidedLabel::sizeHint() const {
    const auto margins = contentsMargins();
    return {fontMetrics().horizontalAdvance(full_) + 1 + margins.left() + margins.right(),
            QLabel::sizeHint().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {std::min(sizeHint().width(), fontMetrics().averageCharWidth() * 4),
            QLabel::minimumSizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        elide();
}

void ElidedLabel::elide() {
    const auto shown = fontMetrics().elidedText(full_, Qt::ElideRight, contentsRect().width());
    if (shown != text())
        setText(shown);
    setToolTip(shown == full_ ? QString() : full_);
}

}  // namespace tembrix
