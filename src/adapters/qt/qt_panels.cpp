#include "adapters/qt/qt_panels.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrl>
#include <memory>
#include <system_error>
#include <utility>

#include "adapters/qt/message_panel.h"

namespace tembrix {
namespace {

constexpr QSize fileDialogSize{860, 520};
constexpr int openerPatience = 10000;  // milliseconds

QString qtext(const std::string& text) {
    return QString::fromStdString(text);
}

// Null if the named window is not open. The panel is a window of its own then.
QWidget* openWindow(const std::string& name) {
    if (name.empty())
        return QApplication::activeWindow();
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->objectName() == qtext(name))
            return window;
    return nullptr;
}

std::vector<std::filesystem::path> chosenFiles(const QFileDialog& dialog) {
    std::vector<std::filesystem::path> files;
    for (const auto& name : dialog.selectedFiles())
        files.emplace_back(QFile::encodeName(name).toStdString());
    return files;
}

// The names get the room that the other columns leave. A dialog of the system has no columns here.
void fitColumns(const QFileDialog& dialog) {
    const auto* files = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
    if (!files)
        return;
    QHeaderView* header = files->header();
    header->setStretchLastSection(false);
    for (int column = 0; column < header->count(); ++column)
        header->setSectionResizeMode(
            column, column == 0 ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
}

QFileDialog* makeFileDialog(const std::string& title, const std::string& message, const char* name,
                            const std::string& window = {}) {
    const auto caption =
        title.empty() || message.empty() ? title + message : title + " \u2013 " + message;
    auto* dialog = new QFileDialog(openWindow(window), qtext(caption));
    dialog->setObjectName(name);
    dialog->setOption(QFileDialog::DontUseNativeDialog,
                      QApplication::testAttribute(Qt::AA_DontUseNativeDialogs));
    const QSize frame(20, 50);
    dialog->resize(fileDialogSize.boundedTo(dialog->screen()->availableSize() - frame));
    fitColumns(*dialog);
    // The folder of the last choice, but not the working directory at the start.
    if (dialog->directory() == QDir::current() || !dialog->directory().exists()) {
        const QDir movies(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation));
        dialog->setDirectory(movies.exists() ? movies : QDir::home());
    }
    return dialog;
}

QString filterText(const std::string& kindName, const std::vector<std::string>& extensions) {
    QStringList patterns;
    for (const auto& extension : extensions)
        // Cameras write extensions in upper case, and not every dialog ignores the case.
        patterns << "*." + qtext(extension) << "*." + qtext(extension).toUpper();
    return (kindName.empty() ? QString() : qtext(kindName) + " ") + "(" + patterns.join(' ') + ")";
}

}  // namespace

void QtPanels::present(QDialog* dialog, std::function<void()> ended) {
    // The dialog finishes or is destroyed with its window. Only the first of both signals has an
    // effect.
    const auto pending = std::make_shared<std::function<void()>>(std::move(ended));
    const auto end = [pending] {
        if (const auto callback = std::exchange(*pending, nullptr))
            callback();
    };
    QObject::connect(dialog, &QDialog::finished, &receiver_, end, Qt::QueuedConnection);
    QObject::connect(dialog, &QObject::destroyed, &receiver_, end, Qt::QueuedConnection);
    QObject::connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->open();
}

void QtPanels::open(const OpenPanelRequest& request,
                    std::function<void(std::vector<std::filesystem::path>)> answer) {
    auto* dialog = makeFileDialog(request.title, request.message, "openPanel");
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(request.folders    ? QFileDialog::Directory
                        : request.multiple ? QFileDialog::ExistingFiles
                                           : QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::ShowDirsOnly, request.folders);
    dialog->setOption(QFileDialog::ReadOnly);  // disables creating, renaming and deleting files
    dialog->setOption(QFileDialog::HideNameFilterDetails, !request.kindName.empty());
    if (!request.extensions.empty())
        dialog->setNameFilter(filterText(request.kindName, request.extensions));
    const auto files = std::make_shared<std::vector<std::filesystem::path>>();
    QObject::connect(dialog, &QDialog::accepted, &receiver_,
                     [dialog, files] { *files = chosenFiles(*dialog); });
    present(dialog, [files, answer = std::move(answer)] { answer(std::move(*files)); });
}

void QtPanels::save(const SavePanelRequest& request,
                    std::function<void(std::optional<std::filesystem::path>)> answer) {
    auto* dialog = makeFileDialog(request.title, {}, "savePanel", request.window);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    if (!request.extension.empty()) {
        const QString kind = qtext(request.extension).toUpper();
        dialog->setOption(QFileDialog::HideNameFilterDetails);
        dialog->setNameFilter(filterText(kind.toStdString(), {request.extension}));
        dialog->setDefaultSuffix(qtext(request.extension));
    }
    std::error_code ignored;
    if (!request.folder.empty() && std::filesystem::is_directory(request.folder, ignored))
        dialog->setDirectory(QFile::decodeName(request.folder.c_str()));
    dialog->selectFile(qtext(request.defaultName));
    const auto file = std::make_shared<std::optional<std::filesystem::path>>();
    QObject::connect(dialog, &QDialog::accepted, &receiver_, [dialog, file] {
        const auto files = chosenFiles(*dialog);
        if (!files.empty())
            *file = files.front();
    });
    present(dialog, [file, answer = std::move(answer)] { answer(std::move(*file)); });
}

void QtPanels::alert(const std::string& title, const std::string& message,
                     std::function<void()> closed, const std::string& window) {
    auto* panel = new MessagePanel(openWindow(window), "alertPanel", title, message);
    auto* ok = panel->addButton("okButtonTitle", texts_.text("okButtonTitle"), "accented");
    ok->setDefault(true);
    QObject::connect(ok, &QPushButton::clicked, panel, &QDialog::accept);
    present(panel, [closed = std::move(closed)] {
        if (closed)
            closed();
    });
}

void QtPanels::confirm(const std::string& title, const std::string& message,
                       const std::string& confirmText, std::function<void(bool)> answer) {
    auto* panel = new MessagePanel(QApplication::activeWindow(), "confirmPanel", title, message);
    auto* cancel = panel->addButton("cancelButtonTitle", texts_.text("cancelButtonTitle"), "quiet");
    QObject::connect(cancel, &QPushButton::clicked, panel, &QDialog::reject);
    auto* yes = panel->addButton("confirmButton", confirmText, "destructive");
    // What is confirmed cannot be undone, so Return alone does not do it.
    cancel->setDefault(true);
    cancel->setFocus();
    const auto confirmed = std::make_shared<bool>(false);
    QObject::connect(yes, &QPushButton::clicked, panel, [panel, confirmed] {
        *confirmed = true;
        panel->accept();
    });
    present(panel, [confirmed, answer = std::move(answer)] { answer(*confirmed); });
}

void QtPanels::reveal(const std::filesystem::path& folder, std::function<void()> failed) {
    openOnDesktop(QUrl::fromLocalFile(QFile::decodeName(folder.c_str())), std::move(failed));
}

void QtPanels::browse(const std::string& url, std::function<void()> failed) {
    openOnDesktop(QUrl(qtext(url)), std::move(failed));
}

// QDesktopServices starts the desktop's opener and never hears that it found no program.
void QtPanels::openOnDesktop(const QUrl& url, std::function<void()> failed) {
    if (url.isLocalFile() && !QFile::exists(url.toLocalFile())) {
        QMetaObject::invokeMethod(
            &receiver_,
            [failed = std::move(failed)] {
                if (failed)
                    failed();
            },
            Qt::QueuedConnection);
        return;
    }
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (opener.isEmpty()) {
        if (!QDesktopServices::openUrl(url) && failed)
            failed();
        return;
    }
    // Without a parent: what it opened stays open when this program ends.
    auto* process = new QProcess;
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    // The opener may run the program itself, and that may end much later in any way.
    const auto ended = [failed = std::move(failed), patience = QDeadlineTimer(openerPatience)](
                           int code, QProcess::ExitStatus status) {
        if (failed && !patience.hasExpired() && (code != 0 || status != QProcess::NormalExit))
            failed();
    };
    QObject::connect(process, &QProcess::finished, &receiver_, ended);
    QObject::connect(process, &QProcess::errorOccurred, &receiver_,
                     [ended, process](QProcess::ProcessError error) {
                         if (error != QProcess::FailedToStart)
                             return;
                         ended(1, QProcess::NormalExit);
                         process->deleteLater();
                     });
    process->start(opener, {url.toString(QUrl::FullyEncoded)});
}

}  // namespace tembrix
