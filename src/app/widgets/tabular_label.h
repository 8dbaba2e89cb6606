#pragma once

#include <QPainter>
#include <QString>
#include <QWidget>

namespace tembrix {

// Text whose figures all take the same width, so that a running time code stands still. The width
// in pixels, and the painting from the left end of the base line in the painter's font and pen.
double tabularWidth(const QFontMetricsF& metrics, const QString& text);
void drawTabular(QPainter& painter, QPointF baseline, const QString& text);

// A time code. Keeps the width of the widest text that it has shown.
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
