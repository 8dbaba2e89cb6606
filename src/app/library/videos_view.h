#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/commands/sheet_commands.h"
#include "app/library/list_services.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/records/video_records.h"
#include "core/safety/data_sync_manager.h"
#include "core/shell/videos_view_model.h"

class QFrame;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QPushButton;
class QStackedWidget;

namespace tembrix {

class NoticeBar;
class SegmentedSwitch;
class Sheet;
class VideoCardDelegate;
class VideosListModel;

// The content of the start window: the list of videos with search and filter, and the sheets for
// adding, renaming and rebinding a video. Shows the state of the view model and sends actions to
// it.
class VideosView final : public QWidget {
    Q_OBJECT

  public:
    VideosView(VideosViewModel& viewModel, const ListServices& services, DataSyncManager& dataSync,
               QWidget* parent = nullptr);

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void bindCommands();
    // Binds a command that acts on the current video.
    void bindOnCurrent(Command command, std::function<void(const QModelIndex&)> run);
    QWidget* makeTopBar();
    QWidget* makeGrid();
    QWidget* makeEmptyPage();
    NoticeBar* makeDeletionBar();
    void showDeletion(const VideosState& state);
    void showEmptyPage();
    // Selects the entry, also if search and filter hide it at present.
    void goTo(const std::string& videoId);
    bool isNarrowed() const;  // by search or filter
    void clearSearch();
    bool keyInSearch(int key);
    bool keyInList(const QKeyEvent& press);
    void showState(const VideosState& state);
    void showList();
    void showSheets(const VideosState& state);
    void fitCards();
    void open(const QModelIndex& index);
    void openMenu(const QModelIndex& index, const QPoint& globalPlace);
    void answer(VideosAction action);  // sends the answer of the open sheet
    void presentMatchSheet(const VideosState& state);
    void presentRenameSheet(const VideosState& state);
    void presentRebindAlert();
    void presentDeletion(const FilesFile& file);  // asks first
    QString lossOf(const FilesFile& file) const;
    void presentError(const VideosState& state);

    VideosViewModel& viewModel_;
    const ListServices services_;
    DataSyncManager& dataSync_;
    VideosListModel* model_;
    VideoCardDelegate* cards_;
    QLineEdit* search_ = nullptr;
    SegmentedSwitch* filter_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    QListView* list_ = nullptr;
    NoticeBar* deletion_ = nullptr;
    std::optional<DeletedMatch> shownDeletion_;
    QFrame* dropFrame_ = nullptr;  // while videos are dragged over the list
    QPushButton* add_ = nullptr;
    QPushButton* addFirst_ = nullptr;  // on the page of an empty list
    QPushButton* clear_ = nullptr;     // on the page of a search without result
    QLabel* emptyTitle_ = nullptr;
    QLabel* emptyHint_ = nullptr;
    QString shownSearch_;
    int shownFilter_ = 0;
    QPointer<Sheet> sheet_;  // the open sheet; one at a time
    Subscription state_;
    Subscription goTo_;
    const SheetCommands sheets_;
    std::vector<Subscription> commands_;
};

}  // namespace tembrix
