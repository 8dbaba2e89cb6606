#include "app/library/videos_view.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMetaObject>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QUrl>
#include <QVBoxLayout>

#include "base/shortened.h"

#include "ports/texts.h"

#include "app/commands/command_button.h"
#include "app/library/data_management_sheet.h"
#include "app/library/safety_bar.h"
#include "app/library/video_card_delegate.h"
#include "app/library/videos_list_model.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/notice_bar.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/segmented_switch.h"
#include "app/widgets/text_focus.h"
#include "app/widgets/translated.h"
#include "core/records/video_records.h"

namespace tembrix {

namespace {

std::vector<std::filesystem::path> droppedFiles(const QMimeData& data) {
    std::vector<std::filesystem::path> files;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile())
            files.emplace_back(QFile::encodeName(url.toLocalFile()).toStdString());
    return files;
}

}  // namespace

VideosView::VideosView(VideosViewModel& viewModel, const ListServices& services,
                       DataSyncManager& dataSync, QWidget* parent)
    : QWidget(parent),
      viewModel_(viewModel),
      services_(services),
      dataSync_(dataSync),
      model_(new VideosListModel(viewModel, services.locale, services.texts, this)),
      cards_(new VideoCardDelegate(this)),
      sheets_(services.commands, *this) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    bindCommands();
    layout->addWidget(makeTopBar());
    layout->addWidget(makeSeparator(Qt::Horizontal));
    layout->addWidget(new SafetyBar(services_.texts, dataSync_, this));
    deletion_ = makeDeletionBar();
    layout->addWidget(deletion_);
    pages_ = new QStackedWidget;
    pages_->addWidget(makeGrid());
    pages_->addWidget(makeEmptyPage());
    layout->addWidget(pages_, 1);
    dropFrame_ = new QFrame(this);
    dropFrame_->setProperty("look", "drop");
    dropFrame_->setAttribute(Qt::WA_TransparentForMouseEvents);
    dropFrame_->hide();
    setAcceptDrops(true);

    state_ = viewModel_.state.observe([this](const VideosState& state) { showState(state); });
    goTo_ = viewModel_.goToVideo.observe([this](const std::string& id) { goTo(id); });
    showState(*viewModel_.state);
    followLanguage(this, services_.texts, [this] { showList(); });
}

void VideosView::bindCommands() {
    const auto bind = [this](Command command, std::function<void()> run) {
        commands_.push_back(services_.commands.bind(command, {std::move(run), {}, {}}));
    };
    commands_.push_back(sheets_.bind(Command::addVideo,
                                     {[this] { viewModel_.send(videos::OpenFiles{}); }, {}, {}}));
    bind(Command::openGuide, [this] { viewModel_.send(videos::OpenGuide{}); });
    bind(Command::showData,
         [this] { (new DataManagementSheet(this, services_, dataSync_))->present(); });
    bind(Command::searchVideos, [this] {
        search_->setFocus(Qt::ShortcutFocusReason);
        search_->selectAll();
    });
    commands_.push_back(services_.commands.bind(
        Command::clearSearch, {[this] { clearSearch(); }, [this] { return isNarrowed(); }, {}}));
    commands_.push_back(services_.commands.bind(
        Command::takeBackDeletion, {[this] { viewModel_.send(videos::TakeBackDeletion{}); },
                                    [this] { return viewModel_.state->deleted.has_value(); },
                                    {}}));
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
    showText(search_, texts, "searchVideos", &QLineEdit::placeholderText,
             &QLineEdit::setPlaceholderText);
    search_->setClearButtonEnabled(true);
    search_->setMinimumWidth(120);
    search_->setMaximumWidth(360);
    nameControl(search_, texts, "searchVideos");
    search_->installEventFilter(this);
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
    add_ = makeButton(texts, "addVideoTitle", ButtonLook::accented);
    bindButton(add_, services_.commands, Command::addVideo, texts);
    row->addWidget(add_);
    return bar;
}

QWidget* VideosView::makeGrid() {
    list_ = new QListView;
    nameControl(list_, services_.texts, "videosListTitle");
    list_->setObjectName("videosList");
    list_->setModel(model_);
    tellRows(list_, {.menu = true});
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
    addFirst_ = makeButton(services_.texts, "addFirstVideo", ButtonLook::accented);
    bindButton(addFirst_, services_.commands, Command::addVideo, services_.texts);
    addFirst_->installEventFilter(this);
    clear_ = makeButton(services_.texts, "commandClearSearch");
    bindButton(clear_, services_.commands, Command::clearSearch, services_.texts);
    for (QPushButton* button : {addFirst_, clear_})
        column->addWidget(button, 0, Qt::AlignCenter);
    column->addStretch();
    return page;
}

NoticeBar* VideosView::makeDeletionBar() {
    auto* bar = new NoticeBar(services_.texts, "deletionBar", "hideDeletion", this);
    auto* back = makeButton(services_.texts, "undoDeletion");
    bindButton(back, services_.commands, Command::takeBackDeletion, services_.texts);
    bar->addButton(back);
    connect(bar, &NoticeBar::hiddenByUser, this, [this] { list_->setFocus(); });
    return bar;
}

void VideosView::showDeletion(const VideosState& state) {
    if (shownDeletion_ == state.deleted)
        return;
    shownDeletion_ = state.deleted;
    if (shownDeletion_)
        deletion_->say([this, title = shortened(shownDeletion_->title)] {
            return qtext(services_.texts.format("videoDeleted", {title}));
        });
    else
        deletion_->hide();
}

bool VideosView::isNarrowed() const {
    return search_ && (!search_->text().isEmpty() || filter_->chosen() != 0);
}

void VideosView::clearSearch() {
    filter_->choose(0);
    search_->clear();
    showList();
    if (list_->isVisible())
        list_->setFocus();
}

void VideosView::goTo(const std::string& videoId) {
    if (!model_->indexOf(videoId).isValid())
        clearSearch();
    const QModelIndex index = model_->indexOf(videoId);
    if (!index.isValid())
        return;
    list_->setCurrentIndex(index);
    list_->setFocus();
    // The list may not have been laid out with the new card yet.
    QMetaObject::invokeMethod(
        list_, [this] { list_->scrollTo(list_->currentIndex()); }, Qt::QueuedConnection);
}

void VideosView::showState(const VideosState& state) {
    showList();
    showDeletion(state);
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

    showEmptyPage();
    services_.commands.refresh();
}

void VideosView::showEmptyPage() {
    const bool noVideos = viewModel_.state->files.empty();
    const char* title = noVideos ? "noVideos" : "nothingFound";
    const char* hint = noVideos ? "noVideosHint" : "nothingFoundHint";
    emptyTitle_->setText(qtext(services_.texts.text(title)));
    emptyHint_->setText(qtext(services_.texts.text(hint)));
    addFirst_->setVisible(noVideos);
    clear_->setVisible(!noVideos);
    // One button at a time stands out.
    setLook(add_, noVideos ? ButtonLook::quiet : ButtonLook::accented);
    const bool hadFocus = pages_->isAncestorOf(window()->focusWidget());
    pages_->setCurrentIndex(model_->rowCount() > 0 ? 0 : 1);
    if (hadFocus && noVideos)
        addFirst_->setFocus();
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

// From the search field, a key leads into the list.
bool VideosView::keyInSearch(int key) {
    if (key == Qt::Key_Escape && isNarrowed()) {
        clearSearch();
        return true;
    }
    const bool into = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Down ||
                      key == Qt::Key_Escape;
    if (!into || !list_->isVisible())
        return false;
    list_->setFocus();
    return true;
}

bool VideosView::keyInList(const QKeyEvent& press) {
    if (press.key() == Qt::Key_Escape && isNarrowed()) {
        clearSearch();
        return true;
    }
    if (press.key() != Qt::Key_Return && press.key() != Qt::Key_Enter)
        return false;
    // The key may still be held down from the sheet that added the match.
    if (list_->currentIndex().isValid() && !press.isAutoRepeat())
        open(list_->currentIndex());
    return true;
}

bool VideosView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& press = *static_cast<QKeyEvent*>(event);
        if ((watched == search_ && keyInSearch(press.key())) ||
            (watched == list_ && keyInList(press)))
            return true;
    }
    // While the sheet about a deletion is open, the button is disabled and cannot get the focus.
    if (watched == addFirst_ && event->type() == QEvent::EnabledChange &&
        window()->focusWidget() == pages_->currentWidget())
        addFirst_->setFocus();
    if (watched == list_ && event->type() == QEvent::ContextMenu &&
        static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) {
        if (const QModelIndex current = list_->currentIndex(); current.isValid())
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
    if (viewModel_.state->files.empty())
        addFirst_->setFocus();
    else
        list_->setFocus();
}

void VideosView::dragEnterEvent(QDragEnterEvent* event) {
    if (droppedFiles(*event->mimeData()).empty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    dropFrame_->setGeometry(rect());
    dropFrame_->raise();
    dropFrame_->show();
}

void VideosView::dragLeaveEvent(QDragLeaveEvent*) {
    dropFrame_->hide();
}

void VideosView::dropEvent(QDropEvent* event) {
    dropFrame_->hide();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    window()->activateWindow();
    viewModel_.send(videos::AddFiles{droppedFiles(*event->mimeData())});
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

}  // namespace tembrix
