#include "app/library/videos_view.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "base/file_url.h"
#include "base/shortened.h"

#include "ports/texts.h"

#include "app/commands/command_button.h"
#include "app/library/data_management_sheet.h"
#include "app/library/match_sheet.h"
#include "app/library/safety_bar.h"
#include "app/library/video_card_delegate.h"
#include "app/library/videos_list_model.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/segmented_switch.h"
#include "app/widgets/sheet.h"
#include "app/widgets/text_focus.h"
#include "core/records/video_records.h"

namespace tembrix {

VideosView::VideosView(VideosViewModel& viewModel, const ListServices& services,
                       DataSyncManager& dataSync, QWidget* parent)
    : QWidget(parent),
      viewModel_(viewModel),
      services_(services),
      dataSync_(dataSync),
      model_(new VideosListModel(viewModel, services.locale, services.texts, this)),
      cards_(new VideoCardDelegate(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    bindCommands();
    layout->addWidget(makeTopBar());
    layout->addWidget(makeSeparator(Qt::Horizontal));
    layout->addWidget(new SafetyBar(services_.texts, dataSync_, this));
    pages_ = new QStackedWidget;
    pages_->addWidget(makeGrid());
    pages_->addWidget(makeEmptyPage());
    layout->addWidget(pages_, 1);

    state_ = viewModel_.state.observe([this](const VideosState& state) { showState(state); });
    showState(*viewModel_.state);
}

void VideosView::bindCommands() {
    const auto bind = [this](Command command, std::function<void()> run) {
        commands_.push_back(services_.commands.bind(command, {std::move(run), {}, {}}));
    };
    bind(Command::addVideo, [this] { viewModel_.send(videos::OpenFiles{}); });
    bind(Command::openGuide, [this] { viewModel_.send(videos::OpenGuide{}); });
    bind(Command::showData,
         [this] { (new DataManagementSheet(this, services_, dataSync_))->present(); });
    bind(Command::searchVideos, [this] {
        search_->setFocus(Qt::ShortcutFocusReason);
        search_->selectAll();
    });
    bindOnCurrent(Command::openVideo, [this](const QModelIndex& index) { open(index); });
    bindOnCurrent(Command::renameVideo, [this](const QModelIndex& index) {
        viewModel_.send(videos::ShowRenameSheet{model_->file(index)});
    });
    bindOnCurrent(Command::toggleFavorite, [this](const QModelIndex& index) {
        viewModel_.send(videos::ToggleFavorite{model_->file(index)});
    });
    bindOnCurrent(Command::rebindVideo, [this](const QModelIndex& index) {
        viewModel_.send(videos::ShowRebindAlert{model_->file(index)});
    });
    bindOnCurrent(Command::deleteVideo,
                  [this](const QModelIndex& index) { presentDeletion(model_->file(index)); });
}

void VideosView::bindOnCurrent(Command command, std::function<void(const QModelIndex&)> run) {
    commands_.push_back(services_.commands.bind(
        command, {[this, run = std::move(run)] { run(list_->currentIndex()); },
                  [this] { return list_ && list_->currentIndex().isValid(); },
                  command == Command::toggleFavorite ? std::function<bool()>([this] {
                      return list_ && list_->currentIndex().isValid() &&
                             model_->file(list_->currentIndex()).videoData.isFavorite == true;
                  })
                                                     : nullptr}));
}

QWidget* VideosView::makeTopBar() {
    const Texts& texts = services_.texts;
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(theme::margin, theme::margin, theme::margin, theme::margin);
    row->setSpacing(theme::spacing);

    search_ = new FocusAwareLineEdit(services_.focus);
    search_->setPlaceholderText(qtext(texts.text("searchVideos")));
    search_->setClearButtonEnabled(true);
    search_->setMinimumWidth(180);
    search_->setMaximumWidth(360);
    nameControl(search_, texts, "searchVideos");
    connect(search_, &QLineEdit::textChanged, this, [this] { showList(); });
    row->addWidget(search_, 1);

    filter_ = new SegmentedSwitch(
        texts, {"videosFilterAll", "videosFilterRecent", "videosFilterFavorites"});
    nameControl(filter_, texts, "videosFilterTitle");
    connect(filter_, &SegmentedSwitch::chosenByUser, this, [this] { showList(); });
    row->addWidget(filter_);
    row->addStretch(1);

    auto* guide = makeButton(texts, "openGuide");
    bindButton(guide, services_.commands, Command::openGuide, texts);
    row->addWidget(guide);
    auto* manage = makeButton(texts, "dataManagementTitle");
    bindButton(manage, services_.commands, Command::showData, texts);
    row->addWidget(manage);
    auto* add = makeButton(texts, "addVideoTitle", ButtonLook::accented);
    bindButton(add, services_.commands, Command::addVideo, texts);
    row->addWidget(add);
    return bar;
}

QWidget* VideosView::makeGrid() {
    list_ = new QListView;
    nameControl(list_, "videosList", qtext(services_.texts.text("videosListTitle")));
    list_->setModel(model_);
    list_->setItemDelegate(cards_);
    list_->setViewMode(QListView::IconMode);
    list_->setMovement(QListView::Static);
    list_->setResizeMode(QListView::Adjust);
    list_->setUniformItemSizes(true);
    list_->setMouseTracking(true);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->installEventFilter(this);
    connect(list_, &QListView::clicked, this, &VideosView::open);
    connect(list_, &QListView::customContextMenuRequested, this, [this](const QPoint& place) {
        const QModelIndex index = list_->indexAt(place);
        if (index.isValid())
            openMenu(index, list_->viewport()->mapToGlobal(place));
    });
    return list_;
}

QWidget* VideosView::makeEmptyPage() {
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->addStretch();
    emptyTitle_ = makeLabel(services_.texts, "noVideos", LabelLook::title);
    emptyHint_ = makeLabel(services_.texts, "noVideosHint", LabelLook::secondary);
    for (QLabel* label : {emptyTitle_, emptyHint_}) {
        label->setAlignment(Qt::AlignCenter);
        column->addWidget(label);
    }
    column->addSpacing(theme::margin);
    auto* add = makeButton(services_.texts, "addVideoTitle", ButtonLook::accented);
    add->setObjectName(QStringLiteral("addVideoTitle.empty"));
    bindButton(add, services_.commands, Command::addVideo, services_.texts);
    column->addWidget(add, 0, Qt::AlignCenter);
    column->addStretch();
    return page;
}

void VideosView::showState(const VideosState& state) {
    showList();
    showSheets(state);
}

void VideosView::showList() {
    const QModelIndex before = list_->currentIndex();
    const bool sameQuestion =
        shownSearch_ == search_->text() && shownFilter_ == filter_->chosen() && before.isValid();
    shownSearch_ = search_->text();
    shownFilter_ = filter_->chosen();
    const std::string chosen = before.isValid() ? model_->file(before).videoData.id : std::string();
    model_->show(utf8Text(search_->text()), static_cast<VideoFilter>(filter_->chosen()));
    QModelIndex current = model_->indexOf(chosen);
    // After a deletion the same row is selected; after a new search, the first result.
    if (!current.isValid())
        current = model_->index(sameQuestion ? qMin(before.row(), model_->rowCount() - 1) : 0);
    list_->setCurrentIndex(current);

    const bool noVideos = viewModel_.state->files.empty();
    const char* title = noVideos ? "noVideos" : "nothingFound";
    const char* hint = noVideos ? "noVideosHint" : "nothingFoundHint";
    emptyTitle_->setText(qtext(services_.texts.text(title)));
    emptyHint_->setText(qtext(services_.texts.text(hint)));
    pages_->setCurrentIndex(model_->rowCount() > 0 ? 0 : 1);
}

void VideosView::open(const QModelIndex& index) {
    const FilesFile file = model_->file(index);
    if (viewModel_.videoPath(file))
        viewModel_.send(videos::OpenVideo{file.videoData.id});
    else
        viewModel_.send(videos::ShowRebindAlert{file});
}

void VideosView::openMenu(const QModelIndex& index, const QPoint& globalPlace) {
    list_->setCurrentIndex(index);
    const bool favorite = model_->file(index).videoData.isFavorite == true;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const char* key, Command command) {
        auto* item = menu->addAction(qtext(services_.texts.text(key)));
        item->setObjectName(QLatin1String(key));
        connect(item, &QAction::triggered, this,
                [this, command] { services_.commands.run(command); });
    };
    add("commandOpenVideo", Command::openVideo);
    menu->addSeparator();
    add("rebindVideo", Command::rebindVideo);
    add(favorite ? "removeFromFavorites" : "addToFavorites", Command::toggleFavorite);
    add("renameButtonTitle", Command::renameVideo);
    menu->addSeparator();
    add("deleteButtonTitle", Command::deleteVideo);
    menu->popup(globalPlace);
}

bool VideosView::eventFilter(QObject* watched, QEvent* event) {
    const QModelIndex current = list_->currentIndex();
    if (event->type() == QEvent::KeyPress && current.isValid()) {
        const int pressed = static_cast<QKeyEvent*>(event)->key();
        if (pressed == Qt::Key_Return || pressed == Qt::Key_Enter) {
            open(current);
            return true;
        }
    }
    if (event->type() == QEvent::ContextMenu && current.isValid() &&
        static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) {
        openMenu(current, list_->viewport()->mapToGlobal(list_->visualRect(current).center()));
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void VideosView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitCards();
}

void VideosView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    fitCards();
    list_->setFocus();
}

bool VideosView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate)
        model_->lookAgain();
    return QWidget::event(event);
}

void VideosView::fitCards() {
    const int room = width() - list_->verticalScrollBar()->sizeHint().width() - theme::unit;
    const int columns = qMax(1, room / (VideoCardDelegate::smallestCard + VideoCardDelegate::gap));
    cards_->setCardWidth(room / columns);
    list_->doItemsLayout();
}

void VideosView::showSheets(const VideosState& state) {
    if (sheet_)
        return;
    if (state.showError)
        presentError(state.errorTitle);
    else if (state.showMetadataSheet)
        presentMatchSheet(state);
    else if (state.showRenameSheet)
        presentRenameSheet(state);
    else if (state.showRebindAlert)
        presentRebindAlert();
}

void VideosView::answer(VideosAction action) {
    // Observers of the action run before `sheet_` is cleared, so that no sheet opens while this one
    // is being answered.
    viewModel_.send(std::move(action));
    sheet_ = nullptr;
    showSheets(*viewModel_.state);
}

void VideosView::presentMatchSheet(const VideosState& state) {
    const VideoMetadata match = state.videoMetadata;
    auto* sheet = new MatchSheet(this, services_.texts, services_.focus, match);
    connect(sheet, &QDialog::finished, this, [this, sheet, match](int result) {
        if (result != QDialog::Accepted)
            return answer(videos::CancelMetadata{});
        std::optional<std::filesystem::path> file;
        if (match.urlString)
            file = pathOfFileUrl(*match.urlString);
        answer(videos::SaveVideoMetadata{file, sheet->team1(), sheet->team2(), sheet->score(),
                                         sheet->date()});
    });
    sheet_ = sheet;
    sheet->present();
}

void VideosView::presentRenameSheet(const VideosState& state) {
    auto* sheet = new RenameSheet(this, services_.texts, services_.focus, state.newFileName);
    connect(sheet, &QDialog::finished, this, [this, sheet, file = state.fileToRename](int result) {
        if (result == QDialog::Accepted && file)
            answer(videos::RenameSimpleVideo{*file, sheet->name()});
        else
            answer(videos::CancelRename{});
    });
    sheet_ = sheet;
    sheet->present();
}

void VideosView::presentDeletion(const FilesFile& file) {
    const std::string name = shortened(viewModel_.displayName(file));
    auto* sheet = new Sheet(this, services_.texts, "deleteVideoTitle");
    sheet->setTitle(qtext(services_.texts.format("deleteVideoTitle", {name})));
    sheet->content()->addWidget(
        makeLabel(services_.texts, "deleteVideoMessage", LabelLook::secondary));
    sheet->addCancelButton("cancelButtonTitle");
    sheet->addAcceptButton("deleteButtonTitle", ButtonLook::destructive);
    connect(sheet, &QDialog::accepted, this,
            [this, file] { viewModel_.send(videos::DeleteFile{file}); });
    sheet->present();
}

void VideosView::presentRebindAlert() {
    auto* sheet = new Sheet(this, services_.texts, "videoUnavailable");
    sheet->content()->addWidget(
        makeLabel(services_.texts, "videoUnavailableMessage", LabelLook::secondary));
    sheet->addCancelButton("cancelButtonTitle");
    sheet->addAcceptButton("selectNewVideo");
    connect(sheet, &QDialog::finished, this, [this](int result) {
        if (result == QDialog::Accepted)
            answer(videos::PickRebindFile{});
        else
            answer(videos::CancelRebind{});
    });
    sheet_ = sheet;
    sheet->present();
}

void VideosView::presentError(const std::string& title) {
    auto* sheet = new Sheet(this, services_.texts, "alertsFileErrorTitle");
    sheet->setTitle(qtext(shortened(title)));
    sheet->addAcceptButton("okButtonTitle");
    connect(sheet, &QDialog::finished, this, [this] { answer(videos::DismissError{}); });
    sheet_ = sheet;
    sheet->present();
}

}  // namespace tembrix
