#pragma once

#include <QStyledItemDelegate>

namespace tembrix {

// Paints one video of the list as a 16:9 card: picture, play or rebind mark under the pointer or
// the focus, star, name and date.
class VideoCardDelegate final : public QStyledItemDelegate {
    Q_OBJECT

  public:
    explicit VideoCardDelegate(QObject* parent);

    // Cards share the width of the list evenly; told by the view when it is resized.
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
