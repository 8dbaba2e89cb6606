#include "app/library/video_card_delegate.h"

#include <QPainter>
#include <QPainterPath>

#include "app/library/videos_list_model.h"
#include "app/theme/theme.h"

namespace tembrix {

namespace {

constexpr int captionHeight = 68;  // three lines
constexpr int markSize = 44;
constexpr int noteHeight = 24;

// Paints a triangle with an exclamation mark cut out of it.
void paintWarningSign(QPainter& painter, const QRectF& place) {
    const auto at = [&](double x, double y) {
        return place.topLeft() + QPointF(x * place.width(), y * place.height());
    };
    QPainterPath sign;
    sign.setFillRule(Qt::OddEvenFill);
    sign.addPolygon(QPolygonF{at(0.5, 0.04), at(1, 0.94), at(0, 0.94), at(0.5, 0.04)});
    sign.addRoundedRect(QRectF(at(0.455, 0.36), at(0.545, 0.68)), 2, 2);
    sign.addEllipse(QRectF(at(0.45, 0.74), at(0.55, 0.84)));
    painter.fillPath(sign, theme::warning);
}

// The area of the mark in the middle of a card. With a note below it, the mark is moved up.
QRect markPlace(const QRect& frame, bool available) {
    QRect place(0, 0, markSize, markSize);
    place.moveCenter(frame.center() - QPoint(0, available ? 0 : noteHeight / 2));
    return place;
}

void paintPicture(QPainter& painter, const QRect& frame, const QPixmap& picture, bool available) {
    QPainterPath rounded;
    rounded.addRoundedRect(frame, theme::corner, theme::corner);
    painter.save();
    painter.setClipPath(rounded);
    painter.fillRect(frame, theme::raised);
    if (!picture.isNull() && available) {
        const QSize filled = picture.size().scaled(frame.size(), Qt::KeepAspectRatioByExpanding);
        QRect target(QPoint(), filled);
        target.moveCenter(frame.center());
        painter.drawPixmap(target, picture);
    } else if (available) {
        theme::icon(QStringLiteral("video-x-generic"), theme::disabledText)
            .paint(&painter, markPlace(frame, true));
    }
    painter.restore();
}

void paintNote(QPainter& painter, const QRect& frame, const QString& note) {
    const QRect line(frame.left(), markPlace(frame, false).bottom() + theme::unit, frame.width(),
                     noteHeight);
    painter.setFont(theme::font(theme::captionSize));
    painter.setPen(theme::warning);
    painter.drawText(line, Qt::AlignCenter, note);
}

void paintMark(QPainter& painter, const QRect& frame, bool available) {
    const QRect disc = markPlace(frame, available);
    painter.setPen(Qt::NoPen);
    painter.setBrush(available ? theme::accent : theme::warning);
    painter.drawEllipse(disc);
    const QString name =
        available ? QStringLiteral("media-playback-start") : QStringLiteral("view-refresh");
    const int inset = markSize / 4;
    theme::icon(name, theme::onAccent).paint(&painter, disc.adjusted(inset, inset, -inset, -inset));
}

}  // namespace

VideoCardDelegate::VideoCardDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QSize VideoCardDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {cardWidth_, (cardWidth_ - gap) * 9 / 16 + captionHeight + gap};
}

void VideoCardDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    painter->save();
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRect card = option.rect.adjusted(gap / 2, gap / 2, -gap / 2, -gap / 2);
    const QRect picture(card.topLeft(), QSize(card.width(), card.width() * 9 / 16));
    const bool available = index.data(VideosListModel::availableRole).toBool();
    const bool focused = option.state.testFlag(QStyle::State_HasFocus) ||
                         (option.state.testFlag(QStyle::State_Selected) &&
                          option.state.testFlag(QStyle::State_Active));

    paintPicture(*painter, picture, index.data(VideosListModel::previewRole).value<QPixmap>(),
                 available);
    if (!available)
        paintNote(*painter, picture, index.data(VideosListModel::noteRole).toString());
    if (option.state.testFlag(QStyle::State_MouseOver) || focused)
        paintMark(*painter, picture, available);
    else if (!available)
        paintWarningSign(*painter, markPlace(picture, false));
    if (index.data(VideosListModel::favoriteRole).toBool()) {
        const QRect star(picture.right() - 28, picture.top() + theme::spacing, 20, 20);
        theme::icon(QStringLiteral("rating"), theme::star).paint(painter, star);
    }
    if (focused) {
        painter->setBrush(Qt::NoBrush);
        painter->setPen(QPen(theme::accent, 2));
        painter->drawRoundedRect(picture.adjusted(1, 1, -1, -1), theme::corner, theme::corner);
    }

    const QRect nameLine(card.left(), picture.bottom() + theme::spacing, card.width(), 20);
    painter->setFont(theme::font(theme::textSize, QFont::DemiBold));
    painter->setPen(available ? theme::text : theme::secondaryText);
    const QString name = index.data(Qt::DisplayRole).toString();
    painter->drawText(nameLine, Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(name, Qt::ElideRight, nameLine.width()));
    painter->setFont(theme::font(theme::captionSize));
    painter->setPen(theme::secondaryText);
    QRect line = nameLine.translated(0, 20);
    for (const int role : {VideosListModel::momentRole, VideosListModel::dateRole}) {
        const QString date = index.data(role).toString();
        if (date.isEmpty())
            continue;
        painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(date, Qt::ElideRight, line.width()));
        line.translate(0, 16);
    }
    painter->restore();
}

}  // namespace tembrix
