#include "app/library/videos_list_model.h"

#include <QFile>
#include <algorithm>
#include <unordered_map>

#include "base/image.h"
#include "base/shortened.h"

namespace tembrix {

VideosListModel::VideosListModel(const VideosViewModel& viewModel, const Locale& locale,
                                 const Texts& texts, QObject* parent)
    : QAbstractListModel(parent), viewModel_(viewModel), locale_(locale), texts_(texts) {}

void VideosListModel::show(const std::string& searchText, VideoFilter filter) {
    beginResetModel();
    // Loaded pictures are kept: loading them again would slow down each key press in the search
    // field.
    std::unordered_map<std::string, Card> before;
    for (auto& card : cards_)
        before.emplace(card.file.videoData.id, std::move(card));
    cards_.clear();
    for (auto& file : viewModel_.filteredFiles(searchText, filter)) {
        Card card;
        if (const auto known = before.find(file.videoData.id);
            known != before.end() && known->second.file.preview == file.preview) {
            card.previewFile = known->second.previewFile;
            card.preview = known->second.preview;
        }
        card.file = std::move(file);
        cards_.push_back(std::move(card));
    }
    endResetModel();
}

void VideosListModel::lookAgain() {
    for (auto& card : cards_)
        card.looked = false;
    if (!cards_.empty())
        Q_EMIT dataChanged(index(0), index(static_cast<int>(cards_.size()) - 1));
}

const FilesFile& VideosListModel::file(const QModelIndex& index) const {
    return cards_.at(static_cast<std::size_t>(index.row())).file;
}

QModelIndex VideosListModel::indexOf(const std::string& videoId) const {
    const auto found = std::find_if(cards_.begin(), cards_.end(), [&](const Card& card) {
        return card.file.videoData.id == videoId;
    });
    return found == cards_.end() ? QModelIndex() : index(static_cast<int>(found - cards_.begin()));
}

int VideosListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(cards_.size());
}

const VideosListModel::Card& VideosListModel::look(int row) const {
    Card& card = cards_.at(static_cast<std::size_t>(row));
    if (card.looked)
        return card;
    card.looked = true;
    const MatchTitle title = viewModel_.title(card.file);
    card.name = QString::fromStdString(shortened(title.name));
    card.moment =
        title.moment ? QString::fromStdString(locale_.dateAndTime(*title.moment)) : QString();
    // Cards always show dates in the style of printed match sheets.
    card.date =
        QString::fromStdString(locale_.shortDate(viewModel_.lastAccess(card.file), "ru_RU"));
    const auto video = viewModel_.videoPath(card.file);
    card.available = video.has_value();
    if (card.file.preview) {
        if (!card.preview.isNull())
            return card;
        const ImageBuffer& image = *card.file.preview;
        card.preview = QPixmap::fromImage(QImage(image.pixels.data(), image.width, image.height,
                                                 static_cast<int>(image.stride()),
                                                 QImage::Format_RGBA8888_Premultiplied));
    } else if (video) {
        const auto file = QFile::decodeName(viewModel_.previewFile(*video).c_str());
        if (card.preview.isNull() || card.previewFile != file)
            card.preview.load(file);
        card.previewFile = file;
    }
    return card;
}

QString VideosListModel::usedText(const Card& card) const {
    return QString::fromStdString(texts_.format("videoCardUsed", {card.date.toStdString()}));
}

QVariant VideosListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const Card& card = look(index.row());
    switch (role) {
        case Qt::DisplayRole:
            return card.name;
        case Qt::ToolTipRole:
            return card.moment.isEmpty() ? card.name : card.name + '\n' + card.moment;
        case Qt::AccessibleTextRole: {
            QString text = card.name;
            if (!card.moment.isEmpty())
                text += QStringLiteral(", ") + card.moment;
            text += QStringLiteral(", ") + usedText(card);
            if (card.file.videoData.isFavorite == true)
                text +=
                    QStringLiteral(", ") + QString::fromStdString(texts_.text("videoCardFavorite"));
            if (!card.available)
                text += QStringLiteral(", ") + index.data(noteRole).toString();
            return text;
        }
        case noteRole:
            return card.available ? QString()
                                  : QString::fromStdString(texts_.text("videoUnavailable"));
        case previewRole:
            return card.preview;
        case availableRole:
            return card.available;
        case favoriteRole:
            return card.file.videoData.isFavorite == true;
        case dateRole:
            return usedText(card);
        case momentRole:
            return card.moment;
        default:
            return {};
    }
}

}  // namespace tembrix
