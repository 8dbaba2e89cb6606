#include "adapters/qt/qt_panels.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <memory>
#include <utility>

namespace tembrix {
namespace {

QString qtext(const std::string& text) {
    return QString::fromStdString(text);
}

std::vector<std::filesystem::path> chosenFiles(const QFileDialog& dialog) {
    std::vector<std::filesystem::path> files;
    for (const auto& name : dialog.selectedFiles())
        files.emplace_back(QFile::encodeName(name).toStdString());
    return files;
}

QFileDialog* makeFileDialog(const std::string& title, const std::string& message,
                            const char* name) {
    const auto caption =
        title.empty() || message.empty() ? title + message : title + " \u2013 " + message;
    auto* dialog = new QFileDialog(QApplication::activeWindow(), qtext(caption));
    dialog->setObjectName(name);
    dialog->setOption(QFileDialog::DontUseNativeDialog,
                      QApplication::testAttribute(Qt::AA_DontUseNativeDialogs));
    return dialog;
}

QString filterText(const std::string& kindName, const std::vector<std::string>& extensions) {
    QStringList patterns;
    for (const auto& extension : extensions)
        patterns.append("*." + qtext(extension));
    return (kindName.empty() ? QString() : qtext(kindName) + " ") + "(" + patterns.join(' ') + ")";
}

QMessageBox* makeMessageBox(const std::string& title, const std::string& message,
                            const char* name) {
    auto* box = new QMessageBox(QApplication::activeWindow());
    box->setObjectName(name);
    box->setTextFormat(Qt::PlainText);
    box->setWindowTitle(qtext(title));
    // The larger first line is the title, unless it is all that there is to say.
    box->setText(qtext(title.empty() ? message : title));
    if (!title.empty())
        box->setInformativeText(qtext(message));
    return box;
}

void nameButton(QPushButton* button, const char* name, const char* look) {
    button->setObjectName(name);
    button->setAccessibleName(button->text());
    button->setProperty("look", look);
}

}  // namespace

void QtPanels::present(QDialog* dialog, std::function<void()> ended) {
    // It finishes, or it is destroyed with its window; the first of the two calls back.
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
    if (!request.extensions.empty())
        dialog->setNameFilter(filterText(request.kindName, request.extensions));
    const auto files = std::make_shared<std::vector<std::filesystem::path>>();
    QObject::connect(dialog, &QDialog::accepted, &receiver_,
                     [dialog, files] { *files = chosenFiles(*dialog); });
    present(dialog, [files, answer = std::move(answer)] { answer(std::move(*files)); });
}

void QtPanels::save(const SavePanelRequest& request,
                    std::function<void(std::optional<std::filesystem::path>)> answer) {
    auto* dialog = makeFileDialog(request.title, {}, "savePanel");
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    if (!request.extension.empty()) {
        dialog->setNameFilter(filterText({}, {request.extension}));
        dialog->setDefaultSuffix(qtext(request.extension));
    }
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
                     std::function<void()> closed) {
    auto* box = makeMessageBox(title, message, "alertPanel");
    auto* ok = box->addButton(qtext(texts_.text("okButtonTitle")), QMessageBox::AcceptRole);
    nameButton(ok, "okButtonTitle", "accented");
    box->setDefaultButton(ok);
    box->setEscapeButton(ok);
    present(box, [closed = std::move(closed)] {
        if (closed)
            closed();
    });
}

void QtPanels::confirm(const std::string& title, const std::string& message,
                       const std::string& confirmText, std::function<void(bool)> answer) {
    auto* box = makeMessageBox(title, message, "confirmPanel");
    auto* cancel = box->addButton(qtext(texts_.text("cancelButtonTitle")), QMessageBox::RejectRole);
    nameButton(cancel, "cancelButtonTitle", "quiet");
    auto* yes = box->addButton(qtext(confirmText), QMessageBox::AcceptRole);
    nameButton(yes, "confirmButton", "accented");
    box->setDefaultButton(yes);
    box->setEscapeButton(cancel);
    const auto confirmed = std::make_shared<bool>(false);
    QObject::connect(yes, &QPushButton::clicked, &receiver_, [confirmed] { *confirmed = true; });
    present(box, [confirmed, answer = std::move(answer)] { answer(*confirmed); });
}

void QtPanels::reveal(const std::filesystem::path& folder) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFile::decodeName(folder.c_str())));
}

void QtPanels::browse(const std::string& url) {
    QDesktopServices::openUrl(QUrl(qtext(url)));
}

}  // namespace tembrix
