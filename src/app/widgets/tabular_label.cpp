#include "app/widgets/tabular_label.h"

#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

#include "app/theme/theme.h"

namespace tembrix {
namespace {

double figureWidth(const QFontMetricsF& metrics) {
    double widest = 0;
    for (char16_t figure = u'0'; figure <= u'9'; ++figure)
        widest = std::max(widest, metrics.horizontalAdvance(QChar(figure)));
    return widest;
}

}  // namespace

double tabularWidth(const QFontMetricsF& metrics, const QString& text) {
    const double figure = figureWidth(metrics);
    double width = 0;
    for (const auto c : text)
        width += c.isDigit() ? figure : metrics.horizontalAdvance(c);
    return width;
}

void drawTabular(QPainter& painter, QPointF baseline, const QString& text) {
    const QFontMetricsF metrics(painter.font(), painter.device());
    const double figure = figureWidth(metrics);
    for (const auto c : text) {
        const double own = metrics.horizontalAdvance(c);
        const double cell = c.isDigit() ? figure : own;
        painter.drawText(baseline + QPointF((cell - own) / 2, 0), QString(c));
        baseline.rx() += cell;
    }
}

TabularLabel::TabularLabel(QWidget* parent) : QWidget(parent), color_(theme::text) {}

void TabularLabel::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    const double width = tabularWidth(QFontMetricsF(font()), text);
    if (width > widest_) {
        widest_ = width;
        updateGeometry();
    }
    update();
}

void TabularLabel::setColor(const QColor& color) {
    color_ = color;
    update();
}

QSize TabularLabel::sizeHint() const {
    const QFontMetricsF metrics(font());
    return {static_cast<int>(std::ceil(std::max(widest_, tabularWidth(metrics, text_)))) + 2,
            static_cast<int>(std::ceil(metrics.height()))};
}

void TabularLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(color_);
    const QFontMetricsF metrics(font());
    drawTabular(painter, {1, (height() - metrics.height()) / 2 + metrics.ascent()}, text_);
}

}  // namespace tembrix
