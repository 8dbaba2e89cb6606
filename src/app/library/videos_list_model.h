#pragma once

#include <QAbstractListModel>
#include <QPixmap>
#include <vector>

#include "ports/texts.h"

#include "core/records/video_records.h"
#include "core/shell/videos_view_model.h"

namespace tembrix {

// The rows of the video list that match search and filter, with the data shown on their cards. The
// file of a video is examined when its card is first shown, so that a long list opens quickly.
class VideosListModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    enum Role {
        previewRole = Qt::UserRole + 1,
        availableRole,
        noteRole,
        favoriteRole,
        dateRole,   // of the last access
        momentRole  // of the match, empty if it is not known
    };

    VideosListModel(const VideosViewModel& viewModel, const Locale& locale, const Texts& texts,
                    QObject* parent);

    void show(const std::string& searchText, VideoFilter filter);
    // Checks again which video files exist. They can change while another program is active.
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
        QString moment;
        QString previewFile;
        QPixmap preview;
    };
    const Card& look(int row) const;
    QString usedText(const Card& card) const;

    const VideosViewModel& viewModel_;
    const Locale& locale_;
    const Texts& texts_;
    mutable std::vector<Card> cards_;
};

}  // namespace tembrix
