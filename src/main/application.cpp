#include "main/application.h"

#include <QApplication>
#include <QByteArray>
#include <QEventLoopLocker>
#include <QFile>
#include <QIcon>
#include <QKeyEvent>
#include <QMenuBar>
#include <QVBoxLayout>
#include <chrono>
#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <functional>
#include <optional>
#include <utility>

#include "base/exit_deadline.h"
#include "base/files.h"
#include "base/log.h"
#include "base/signal.h"

#include "ports/directories.h"
#include "ports/platform.h"

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
#include "adapters/sqlite/stored_value.h"
#include "app/commands/command_menu_bar.h"
#include "app/export/product_questions.h"
#include "app/export/saved_product_bar.h"
#include "app/library/videos_view.h"
#include "app/shell/key_monitor.h"
#include "app/shell/project_windows.h"
#include "app/shell/shell_commands.h"
#include "app/shell/window_factory.h"
#include "app/shell/window_place.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/safety_banner.h"
#include "core/commands/command_table.h"
#include "core/commands/key_router.h"
#include "core/composition/core_services.h"
#include "core/export/unsaved_products.h"
#include "core/keyboard/hot_key_codes.h"
#include "core/settings/settings.h"
#include "core/shell/project.h"
#include "core/shell/user_guide.h"
#include "core/shell/videos_view_model.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

constexpr double quitPatience = 2.0;  // seconds to wait for file writes
// For all of the end, in which a player or a thread may hang on a dead drive. Everything has a
// working copy by then.
constexpr std::chrono::seconds exitPatience{8};
constexpr QSize listSize{1080, 720};

KeyPress keyPress(const QKeyEvent& event) {
    NativeKey native = translateKey(event);
    return {native.code,
            {native.control, native.option, native.shift, native.command, native.function},
            std::move(native.characters)};
}

// The adapters that implement the ports on this machine.
struct Machine {
    explicit Machine(const std::filesystem::path& folder) : resources(folder) {}

    const std::filesystem::path resources;
    std::string language = systemLanguage();  // of the texts
    StandardLog log;
    QtScheduler scheduler;
    const Directories directories = qtDirectories();
    SqliteUserDefaults defaults{
        programDataFolder() / layout::defaultsFile,
        log,
        {directories.documents / layout::dataFolder, programStateFolder(), directories.temporary}};
    FileKeychain keychain{programStateFolder() / "keychain", log};
    FileBookmarks bookmarks;
    PlistPropertyList propertyLists;
    FileTexts texts{resources / "texts", language, log};
    QtLocale locale{language};
    QtPanels panels{texts};
    ProductQuestions questions{panels, texts, UnsavedProducts::homeWindow};
    QtProcessRunner processes;
    FfmpegMedia media;
    MpvPlayerFactory players{media};
    FfmpegMovieRenderer renderer;
    QtImageCodec images;
    QtPictureRenderer pictures{theme::font().families()};
    QtTextMeasure textMeasure{theme::font().families()};
    const Platform platform{
        .log = log,
        .directories = directories,
        .resources = resources,
        .scheduler = scheduler,
        .defaults = defaults,
        .keychain = keychain,
        .bookmarks = bookmarks,
        .propertyLists = propertyLists,
        .texts = texts,
        .locale = locale,
        .panels = questions,
        .processes = processes,
        .players = players,
        .media = media,
        .renderer = renderer,
        .images = images,
        .pictures = pictures,
        .textMeasure = textMeasure,
    };
};

}  // namespace

struct Application::Parts {
    explicit Parts(const std::filesystem::path& resources) : machine(resources) {
        windowFactory.setMakers(
            windowMakers(
                core, [this](QWidget* parent) { return machine.players.makeSurface(parent); },
                &keyPress),
            {.menuBar =
                 [this](QWidget* parent, CommandScope commands) {
                     return new CommandMenuBar(core.commands, machine.texts, commands, parent);
                 },
             .banner =
                 [this](QWidget* parent) {
                     return new SafetyBanner(core.health, machine.texts, parent);
                 }});
        followLanguage();
        stayForProducts();
        core.start();
    }
    ~Parts();

    void makeListWindow();
    // Puts the texts into the language of the settings, now and after each change of it.
    void followLanguage();
    void useLanguage(const std::string& chosen);
    // Closing the last window must not end the program while a product can still be saved.
    void stayForProducts();

    Machine machine;
    QtWindowFactory windowFactory{&machine.defaults};
    CoreServices core{machine.platform, windowFactory};
    KeyRouter keyRouter{core.commands, [this] {
                            Project* open = core.windows.project();
                            return open ? &open->hotkeys : nullptr;
                        }};
    KeyMonitor keyMonitor{keyRouter, &keyPress};
    ShellCommands shellCommands{core.commands, core.focus, machine.texts, [this] {
                                    auto all = windowFactory.windows();
                                    all.insert(all.begin(), listWindow.get());
                                    return all;
                                }};
    std::optional<VideosViewModel> videos;
    std::unique_ptr<QWidget> listWindow;
    std::optional<WindowPlace> listPlace;
    std::optional<QEventLoopLocker> staying;
    Subscription anyProducts;
    Subscription settingsChanged;
};

Application::Parts::~Parts() {
    core.products.leaveForNextStart();
    core.storage.applicationWillTerminate();
    core.windows.closeEverything();
    listPlace.reset();
    listWindow.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    core.storage.applicationWillTerminate();  // what was changed by closing
    // Work that does not end in time must not keep the process alive.
    if (!machine.scheduler.drain(quitPatience)) {
        machine.defaults.makeDurable();
        std::_Exit(EXIT_SUCCESS);
    }
}

void Application::Parts::followLanguage() {
    installDialogTexts(*qApp, machine.language);
    useLanguage(core.settings.values->language);
    settingsChanged = core.settings.values.observe(
        [this](const SettingsValues& values) { useLanguage(values.language); });
}

void Application::Parts::useLanguage(const std::string& chosen) {
    const std::string language = chosen.empty() ? systemLanguage() : chosen;
    if (language == machine.language)
        return;
    machine.language = language;
    machine.locale.setLanguage(language);
    installDialogTexts(*qApp, language);
    machine.texts.setLanguage(language);
}

void Application::Parts::stayForProducts() {
    anyProducts = core.products.any.observe([this](bool any) {
        if (!any)
            staying.reset();
        else if (!staying)
            staying.emplace();
    });
}

void Application::Parts::makeListWindow() {
    machine.questions.pauseVideo = [this] {
        Project* open = core.windows.project();
        return open ? open->player.pauseMeanwhile() : Subscription();
    };
    videos.emplace(core.library, core.previews, core.windows, core.panels, machine.scheduler,
                   machine.texts, machine.locale, [this] {
                       return writeGuide(machine.resources / "guides",
                                         machine.directories.temporary / "guide", machine.locale,
                                         core.commands, machine.texts);
                   });
    videos->setWhenReady(
        [this](std::function<void()> task) { core.startUp.whenReady(std::move(task)); });
    listWindow = std::make_unique<QWidget>();
    listWindow->setObjectName(QString::fromLatin1(UnsavedProducts::homeWindow));
    listWindow->setWindowTitle(QStringLiteral("Tembrix Stat"));
    listWindow->setAccessibleName(listWindow->windowTitle());
    auto* layout = new QVBoxLayout(listWindow.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setMenuBar(
        new CommandMenuBar(core.commands, machine.texts, CommandScope::list, listWindow.get()));
    layout->addWidget(new VideosView(
        *videos,
        {machine.texts, machine.locale, core.focus, core.commands, core.panels, machine.scheduler},
        core.dataSync));
    new SavedProductBar(core.products, machine.panels, machine.texts, UnsavedProducts::homeWindow,
                        listWindow.get());
    listWindow->resize(listSize);
    listPlace.emplace(*listWindow, &machine.defaults, UnsavedProducts::homeWindow);
    listPlace->begin();
}

void Application::prepare() {
#ifdef __GLIBC__
    // Each thread would have its own heap and keep the memory of the largest document it has used.
    mallopt(M_ARENA_MAX, 2);
#endif
    MpvPlayerFactory::prepareApplication();
}

Application::Application(std::filesystem::path resources) : resources_(std::move(resources)) {}

Application::~Application() {
    const ExitDeadline deadline(exitPatience);
    parts_.reset();
}

void Application::start() {
    installAccessibility();
    parts_ = std::make_unique<Parts>(resources_);
    theme::applyTheme(*qApp);
    QApplication::setWindowIcon(
        QIcon(QFile::decodeName((resources_ / "tembrix-stat.svg").c_str())));
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

CoreServices& Application::core() const {
    return parts_->core;
}

namespace {
constexpr const char* scaleVariable = "QT_SCALE_FACTOR";
}

InterfaceScale::InterfaceScale() {
    if (qEnvironmentVariableIsSet(scaleVariable))
        before_ = qgetenv(scaleVariable).toStdString();
    StandardLog log;
    const auto stored =
        readStoredValue(programDataFolder() / layout::defaultsFile, layout::settingsKey);
    const int percent = stored ? decodeSettings(*stored, log).interfaceScale : 100;
    if (percent == 100)
        return;
    bool isNumber = false;
    const double factor = qgetenv(scaleVariable).toDouble(&isNumber);
    qputenv(scaleVariable, QByteArray::number((isNumber ? factor : 1.0) * percent / 100));
}

void InterfaceScale::restore() const {
    if (before_)
        qputenv(scaleVariable, QByteArray::fromStdString(*before_));
    else
        qunsetenv(scaleVariable);
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
