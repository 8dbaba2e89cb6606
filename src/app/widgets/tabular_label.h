#pragma once

#include <QPainter>
#include <QString>
#include <QWidget>

namespace tembrix {

// Measures and paints text with digits of equal width, so that a running time does not shift.
// Widths are in pixels; the text is painted from the left end of its baseline with the painter's
// font and pen.
double tabularWidth(const QFontMetricsF& metrics, const QString& text);
void drawTabular(QPainter& painter, QPointF baseline, const QString& text);

// Shows a time. The label keeps the width of the widest text it has shown.
class TabularLabel final : public QWidget {
    Q_OBJECT
  public:
    explicit TabularLabel(QWidget* parent = nullptr);

    void setText(const QString& text);
    const QString& text() const { return text_; }
    void setColor(const QColor& color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString text_;
    QColor color_;
    double widest_ = 0;
};

}  // namespace tembrix
