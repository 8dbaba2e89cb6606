#pragma once

#include <QStyledItemDelegate>

namespace tembrix {

// Paints one video of the list as a 16:9 card: picture, star, name and date, and a play or rebind
// mark on the hovered or focused card.
class VideoCardDelegate final : public QStyledItemDelegate {
    Q_OBJECT

  public:
    explicit VideoCardDelegate(QObject* parent);

    // Cards share the width of the list evenly. Called by the view when it is resized.
    void setCardWidth(int width) { cardWidth_ = width; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    static constexpr int smallestCard = 240;
    static constexpr int gap = 16;

  private:
    int cardWidth_ = smallestCard;
};

}  // namespace tembrix
