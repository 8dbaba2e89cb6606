#pragma once

#include <QColor>
#include <QIcon>
#include <QIconEngine>
#include <utility>

namespace tembrix::theme {

// Paints the shape of another icon in one color, so that icons made for light backgrounds are
// readable on the dark one.
class FlatIconEngine final : public QIconEngine {
  public:
    FlatIconEngine(QIcon shape, const QColor& color) : shape_(std::move(shape)), color_(color) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override;
    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override { return size; }
    QIconEngine* clone() const override { return new FlatIconEngine(shape_, color_); }
    bool isNull() override { return shape_.isNull(); }

  private:
    QIcon shape_;
    QColor color_;
};

}  // namespace tembrix::theme
