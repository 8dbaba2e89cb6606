#include "main/application.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QKeyEvent>
#include <QMenuBar>
#include <QVBoxLayout>
#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <optional>
#include <utility>

#include "base/files.h"
#include "base/log.h"

#include "ports/directories.h"

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "adapters/ffmpeg/ffmpeg_movie_renderer.h"
#include "adapters/mpv/mpv_player_factory.h"
#include "adapters/plist/plist_property_list.h"
#include "adapters/qt/file_bookmarks.h"
#include "adapters/qt/file_keychain.h"
#include "adapters/qt/file_texts.h"
#include "adapters/qt/native_keys.h"
#include "adapters/qt/qt_directories.h"
#include "adapters/qt/qt_image_codec.h"
#include "adapters/qt/qt_locale.h"
#include "adapters/qt/qt_panels.h"
#include "adapters/qt/qt_pictures.h"
#include "adapters/qt/qt_process_runner.h"
#include "adapters/qt/qt_scheduler.h"
#include "adapters/sqlite/sqlite_user_defaults.h"
#include "app/control/full_control_view.h"
#include "app/library/videos_view.h"
#include "app/marking/tag_library_view.h"
#include "app/playback/video_player_view.h"
#include "app/services.h"
#include "app/shell/key_monitor.h"
#include "app/shell/main_menu.h"
#include "app/shell/window_factory.h"
#include "app/theme/theme.h"
#include "core/collections/collections_bookmarks_manager.h"
#include "core/collections/custom_collection_manager.h"
#include "core/collections/tag_library_manager.h"
#include "core/export/export_helper.h"
#include "core/keyboard/hot_key_codes.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/text_focus.h"
#include "core/marking/marking_flow.h"
#include "core/notifications/event_bus.h"
#include "core/notifications/events.h"
#include "core/playback/video_player_manager.h"
#include "core/safety/data_sync_manager.h"
#include "core/shell/videos_view_model.h"
#include "core/shell/windows_manager.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"
#include "core/storage/videos_preview_manager.h"
#include "core/timeline/markup_mode_store.h"
#include "core/timeline/timeline_data_manager.h"
#include "core/timeline/timeline_history.h"

namespace tembrix {

namespace {

constexpr double quitPatience = 2.0;  // seconds for file writes under way
constexpr QSize listSize{1080, 720};

KeyPress keyPress(const QKeyEvent& event) {
    NativeKey native = translateKey(event);
    return {native.code,
            {native.control, native.option, native.shift, native.command, native.function},
            std::move(native.characters)};
}

// What the launch synchronization needs. It starts here, before anything else reads the data.
struct Foundation {
    Foundation() {
        storage.setCollectionIndex(&index);
        dataSync.syncOnLaunch();
    }
    ~Foundation() { storage.setCollectionIndex(nullptr); }

    StandardLog log;
    Directories directories = qtDirectories();
    QtScheduler scheduler;
    SqliteUserDefaults defaults{programDataFolder() / "defaults.sqlite", log};
    FileKeychain keychain{programStateFolder() / "keychain", log};
    FileBookmarks bookmarks;
    PlistPropertyList propertyLists;
    EventBus events;
    InMemoryStorageManager storage{defaults, scheduler, directories, log};
    CollectionsBookmarksManager index{storage, bookmarks, keychain, scheduler, events, log};
    DataSyncManager dataSync{DataSyncServices{defaults, storage, index, bookmarks, propertyLists,
                                              scheduler, directories, log}};
};

}  // namespace

struct Application::Parts : Foundation {
    explicit Parts(const std::filesystem::path& resources);
    ~Parts();

    QtWindowFactory::Content makeContent(WindowKind kind, QWidget* parent);
    void makeListWindow();

    std::filesystem::path resources;
    std::string language = systemLanguage();
    FileTexts texts;
    QtLocale locale{language};
    QtImageCodec images;
    QtTextMeasure textMeasure{theme::font().families()};
    QtPictureRenderer pictures{theme::font().families()};
    QtProcessRunner processes;
    QtPanels panels{texts};
    FfmpegMedia media;
    FfmpegMovieRenderer renderer;
    MpvPlayerFactory players{media};

    FocusStateManager focus;
    CollectionServices collections{storage, index, bookmarks, scheduler, events, texts, log};
    VideoFilesManager library{storage, bookmarks, directories, texts, log};
    VideosPreviewManager previews{media, images, scheduler, directories};
    TagLibraryManager tagLibrary;
    MarkupModeStore markupModes{defaults, events};
    TimelineDataManager timeline{storage, library, tagLibrary, markupModes, events, texts};
    TimelineHistory history{timeline};
    VideoPlayerManager player{players, log};
    HotKeyManager hotkeys{events, scheduler, focus, player};
    ExportServices exports{player,      timeline,    tagLibrary, media,  renderer,
                           pictures,    textMeasure, processes,  panels, scheduler,
                           directories, texts,       log};
    AppServices services{
        scheduler,  events,
        texts,      locale,
        panels,     images,
        timeline,   history,
        tagLibrary, markupModes,
        player,     hotkeys,
        focus,      collections,
        exports,    [this](QWidget* parent) { return players.makeSurface(parent); }};
    QtWindowFactory windowFactory{
        [this](WindowKind kind, QWidget* parent) { return makeContent(kind, parent); }};
    WindowsManager windows{library,    storage,       timeline, player, hotkeys,
                           tagLibrary, windowFactory, events,   texts};
    KeyMonitor keyMonitor{hotkeys, &keyPress};
    QuitKeys quitKeys{texts};
    std::optional<VideosViewModel> videos;
    std::unique_ptr<MarkingFlow> marking;  // of the open tag panel
    std::unique_ptr<QWidget> listWindow;
};

Application::Parts::Parts(const std::filesystem::path& resourceFolder)
    : resources(resourceFolder),
      texts(resources / "texts", language, log),
      tagLibrary(collections, resources / "collections", locale) {
    tagLibrary.setHotkeyRegistry(&hotkeys);
    library.setDeletedTimelineKeeper(&dataSync);
    dataSync.setRestored([this] {
        library.reloadFiles();
        events.post(events::CollectionDataChanged{});
    });
}

Application::Parts::~Parts() {
    windows.closeAll();
    listWindow.reset();
    // Windows that are on their way out still refer to the services.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    marking.reset();
    storage.applicationWillTerminate();
    // The working copy is safe already. Work that does not come to its end must not hold the
    // process.
    if (!scheduler.drain(quitPatience))
        std::_Exit(0);
    tagLibrary.setHotkeyRegistry(nullptr);
}

QtWindowFactory::Content Application::Parts::makeContent(WindowKind kind, QWidget* parent) {
    switch (kind) {
        case WindowKind::video:
            return {new VideoPlayerView(services, parent), {}};
        case WindowKind::control:
            return {new FullControlView(services, parent), {}};
        case WindowKind::tagLibrary:
            break;
    }
    marking = std::make_unique<MarkingFlow>(timeline, tagLibrary, markupModes, collections, player,
                                            windows, scheduler, events);
    return {new TagLibraryView(services, *marking, parent), [this] { marking->disappear(); }};
}

void Application::Parts::makeListWindow() {
    library.start();
    videos.emplace(library, previews, windows, panels, scheduler, texts, locale,
                   resources / "guides");
    listWindow = std::make_unique<QWidget>();
    listWindow->setObjectName(QStringLiteral("list"));
    listWindow->setWindowTitle(QStringLiteral("Tembrix Stat"));
    listWindow->setAccessibleName(listWindow->windowTitle());
    auto* layout = new QVBoxLayout(listWindow.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setMenuBar(makeMainMenu(texts, listWindow.get()));
    layout->addWidget(new VideosView(*videos, services, dataSync));
    listWindow->resize(listSize);
}

void Application::prepare() {
#ifdef __GLIBC__
    // Every background thread would keep the room of the largest document that it ever had in hand.
    mallopt(M_ARENA_MAX, 2);
#endif
    MpvPlayerFactory::prepareApplication();
}

Application::Application(std::filesystem::path resources) : resources_(std::move(resources)) {}

Application::~Application() = default;

void Application::start() {
    parts_ = std::make_unique<Parts>(resources_);
    theme::applyTheme(*qApp);
    QApplication::setWindowIcon(
        QIcon(QFile::decodeName((resources_ / "tembrix-stat.svg").c_str())));
    installDialogTexts(*qApp, parts_->language);
    parts_->makeListWindow();
    parts_->listWindow->show();
}

void Application::bringForward() {
    QWidget& list = listWindow();
    list.setWindowState(list.windowState() & ~Qt::WindowMinimized);
    list.show();
    list.raise();
    list.activateWindow();
}

QWidget& Application::listWindow() {
    return *parts_->listWindow;
}

const AppServices& Application::services() const {
    return parts_->services;
}

std::filesystem::path findResources() {
    const std::filesystem::path program =
        QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString();
    const std::filesystem::path installed = program.parent_path() / "share/tembrix-stat";
    std::error_code ignored;
    if (std::filesystem::exists(installed / "texts", ignored))
        return installed;
    for (auto folder = program; folder.has_relative_path(); folder = folder.parent_path())
        if (std::filesystem::exists(folder / "resources/texts", ignored))
            return folder / "resources";
    return installed;
}

}  // namespace tembrix
