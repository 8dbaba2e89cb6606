#pragma once

#include <QAbstractListModel>
#include <QPixmap>
#include <vector>

#include "ports/texts.h"

#include "core/records/video_records.h"
#include "core/shell/videos_view_model.h"

namespace tembrix {

// The rows of the video list for the item view: what search and filter leave, with what a card
// shows. The file of a row is looked at when the row is first shown, so that a long list opens at
// once.
class VideosListModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    enum Role { previewRole = Qt::UserRole + 1, availableRole, noteRole, favoriteRole, dateRole };

    VideosListModel(const VideosViewModel& viewModel, const Locale& locale, const Texts& texts,
                    QObject* parent);

    void show(const std::string& searchText, VideoFilter filter);
    // Files come and go with disks while the program is not looked at.
    void lookAgain();
    const FilesFile& file(const QModelIndex& index) const;
    QModelIndex indexOf(const std::string& videoId) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    struct Card {
        FilesFile file;
        bool looked = false;
        bool available = false;
        QString name;
        QString date;
        QString previewFile;
        QPixmap preview;
    };
    const Card& look(int row) const;

    const VideosViewModel& viewModel_;
    const Locale& locale_;
    const Texts& texts_;
    mutable std::vector<Card> cards_;
};

}  // namespace tembrix
