#pragma once

#include <QLayout>
#include <vector>

namespace tembrix {

// Lays out items in rows from the left and starts a new row if the next item does not fit. Each row
// is as high as its highest item. The height depends on the width.
class FlowLayout final : public QLayout {
    Q_OBJECT
  public:
    explicit FlowLayout(int spacing, QWidget* parent = nullptr);
    ~FlowLayout() override;

    // Distributes the spare width of a row over its items, so that a grid of equal cards fills its
    // rows. The items of a last, shorter row are as wide as those above.
    void setFillsRows(bool fills);

    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(items_.size()); }
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override { return minimumSize(); }
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

  private:
    int arrange(const QRect& rect, bool apply) const;

    std::vector<QLayoutItem*> items_;
    bool fillsRows_ = false;
};

}  // namespace tembrix
