#include "app/library/data_management_sheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "base/files.h"
#include "base/utf8_text.h"

#include "ports/panels.h"
#include "ports/scheduler.h"

#include "app/theme/theme.h"
#include "app/widgets/qt_text.h"

namespace tembrix {

namespace {
constexpr int sheetWidth = 560;
}

DataManagementSheet::DataManagementSheet(QWidget* parent, const ListServices& services,
                                         DataSyncManager& dataSync)
    : Sheet(parent, services.texts, "dataManagementTitle"),
      services_(services),
      dataSync_(dataSync) {
    setMinimumWidth(sheetWidth);
    content()->addWidget(makeLabel(texts(), "dataManagementBackupSystemInfo"));
    content()->addWidget(
        makeLabel(texts(), "dataManagementBackupSystemDescription", LabelLook::secondary));
    content()->addWidget(makeLabel(texts(), "dataManagementBackupNote", LabelLook::secondary));

    addStore("dataManagementDocumentsTitle", "dataManagementDocumentsDescription",
             "dataManagementDocumentsHelp", [this] { return dataSync_.documentsFolder(); });
    addStore("dataManagementApplicationSupportTitle", "dataManagementApplicationSupportDescription",
             "dataManagementApplicationSupportHelp", [this] { return dataSync_.backupRoot(); });
    content()->addWidget(makeSeparator(Qt::Horizontal));

    actions_ = new QWidget;
    auto* column = new QVBoxLayout(actions_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::margin);
    content()->addWidget(actions_);
    addAction("dataManagementRestoreFromBackup", "dataManagementRestoreFromBackupDescription",
              ButtonLook::quiet, [this] {
                  confirm("dataManagementRestoreConfirmationTitle",
                          "dataManagementRestoreConfirmationMessage",
                          "dataManagementRestoreFromBackup", ButtonLook::accented, [this] {
                              process([&sync = dataSync_] { return sync.restoreFromBackup(); },
                                      "dataManagementRestoreSuccess",
                                      "dataManagementRestoreFailed");
                          });
              });
    addAction("dataManagementCreateBackup", "dataManagementCreateBackupDescription",
              ButtonLook::quiet, [this] {
                  process([&sync = dataSync_] { return sync.backUpNow(); },
                          "dataManagementBackupCreatedSuccess", "dataManagementBackupFailed");
              });
    addAction("dataManagementDeleteAllData", "dataManagementDeleteAllDataDescription",
              ButtonLook::destructive, [this] {
                  confirm("dataManagementDeleteConfirmationTitle",
                          "dataManagementDeleteConfirmationMessage", "dataManagementDeleteAllData",
                          ButtonLook::destructive, [this] {
                              process(
                                  [&sync = dataSync_] {
                                      auto done = sync.deleteAllData();
                                      sync.deleteBackupTimelines();
                                      return done;
                                  },
                                  "dataManagementDeleteSuccess", "dataManagementDeleteFailed");
                          });
              });

    replaced_ = new QWidget;
    (new QVBoxLayout(replaced_))->setContentsMargins(0, 0, 0, 0);
    content()->addWidget(replaced_);
    showReplacedStates();

    status_ = makeLabel(texts(), "dataManagementProcessing", LabelLook::secondary);
    status_->hide();
    content()->addWidget(status_);
    // Both keep their space in the layout while hidden, so that nothing moves.
    for (QWidget* part : {actions_, static_cast<QWidget*>(status_)}) {
        QSizePolicy policy = part->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        part->setSizePolicy(policy);
    }
    close_ = addAcceptButton("closeButtonTitle", ButtonLook::quiet, false);
    connect(close_, &QPushButton::clicked, this, &DataManagementSheet::reject);
}

void DataManagementSheet::reject() {
    if (!isProcessing_)
        Sheet::reject();
}

void DataManagementSheet::sayFolderFailed(const std::filesystem::path& folder) {
    status_->setText(qtext(texts().format("folderNotShown", {sanitizedUtf8(pathText(folder))})));
    status_->show();
}

void DataManagementSheet::addStore(const char* titleKey, const char* descriptionKey,
                                   const char* helpKey,
                                   std::function<std::filesystem::path()> folder) {
    auto* row = new QHBoxLayout;
    row->setSpacing(theme::margin);
    auto* open = makeButton(texts(), titleKey);
    open->setIcon(theme::icon(QStringLiteral("folder-open")));
    open->setToolTip(qtext(texts().text(helpKey)));
    open->setAccessibleDescription(open->toolTip());
    open->setMinimumWidth(sheetWidth / 3);
    connect(open, &QPushButton::clicked, this, [this, folder = std::move(folder)] {
        const auto place = folder();
        if (makeFolder(place))
            services_.panels.reveal(place, [self = QPointer(this), place] {
                if (self)
                    self->sayFolderFailed(place);
            });
    });
    row->addWidget(open);
    row->addWidget(makeLabel(texts(), descriptionKey, LabelLook::secondary), 1);
    content()->addLayout(row);
}

void DataManagementSheet::addAction(const char* titleKey, const char* descriptionKey,
                                    ButtonLook look, std::function<void()> pressed) {
    auto* row = new QHBoxLayout;
    row->setSpacing(theme::margin);
    auto* button = makeButton(texts(), titleKey, look);
    button->setMinimumWidth(sheetWidth / 3);
    connect(button, &QPushButton::clicked, this, [this, button, pressed = std::move(pressed)] {
        pressed_ = button;
        pressed();
    });
    row->addWidget(button, 0, Qt::AlignTop);
    row->addWidget(makeLabel(texts(), descriptionKey, LabelLook::secondary), 1);
    static_cast<QVBoxLayout*>(actions_->layout())->addLayout(row);
}

void DataManagementSheet::showReplacedStates() {
    delete states_;
    states_ = nullptr;
    const auto states = dataSync_.replacedStates();
    if (states.empty())
        return;
    states_ = new QWidget;
    auto* column = new QVBoxLayout(states_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::spacing);
    column->addWidget(makeSeparator(Qt::Horizontal));
    column->addWidget(makeLabel(texts(), "dataManagementReplacedTitle"));
    column->addWidget(
        makeLabel(texts(), "dataManagementReplacedDescription", LabelLook::secondary));
    int number = 0;
    for (const auto& state : states)
        addReplacedState(column, state, number++);
    replaced_->layout()->addWidget(states_);
}

void DataManagementSheet::addReplacedState(QVBoxLayout* column, const ReplacedData::State& state,
                                           int number) {
    auto* row = new QHBoxLayout;
    row->setSpacing(theme::margin);
    const QString moment =
        QString::fromStdString(services_.locale.fileStamp(state.moment)).replace('_', ' ');
    auto* button = makeButton(texts(), "dataManagementBringBack");
    button->setObjectName(QStringLiteral("dataManagementBringBack.%1").arg(number));
    button->setAccessibleDescription(moment);
    button->setMinimumWidth(sheetWidth / 3);
    connect(button, &QPushButton::clicked, this, [this, name = state.name] {
        pressed_ = close_;  // the rows are created again
        process([&sync = dataSync_, name] { return sync.bringBack(name); },
                "dataManagementBringBackSuccess", "dataManagementRestoreFailed");
    });
    row->addWidget(button);
    auto* label = new QLabel(moment);
    setLook(label, LabelLook::secondary);
    row->addWidget(label, 1);
    column->addLayout(row);
}

void DataManagementSheet::confirm(const char* titleKey, const char* messageKey,
                                  const char* buttonKey, ButtonLook look,
                                  std::function<void()> confirmed) {
    auto* question = new Sheet(this, texts(), titleKey);
    question->content()->addWidget(makeLabel(texts(), messageKey, LabelLook::secondary));
    question->addCancelButton("cancelButtonTitle");
    question->addAcceptButton(buttonKey, look);
    connect(question, &QDialog::accepted, this,
            [confirmed = std::move(confirmed)] { confirmed(); });
    question->present();
}

void DataManagementSheet::process(std::function<Result<void>()> work, const char* successKey,
                                  const char* failureKey) {
    setProcessing(true);
    services_.scheduler.background(
        Priority::userInitiated, [&scheduler = services_.scheduler, self = QPointer(this),
                                  work = std::move(work), successKey, failureKey] {
            const char* resultKey = work() ? successKey : failureKey;
            scheduler.onMain([self, resultKey] {
                if (!self)
                    return;
                self->showReplacedStates();
                self->setProcessing(false);
                self->pressed_->setFocus();  // it lost the focus when it was hidden
                self->status_->setText(qtext(self->texts().text(resultKey)));
                self->status_->show();
            });
        });
}

void DataManagementSheet::setProcessing(bool processing) {
    isProcessing_ = processing;
    actions_->setVisible(!processing);
    replaced_->setVisible(!processing);
    close_->setEnabled(!processing);
    status_->setText(qtext(texts().text("dataManagementProcessing")));
    status_->setVisible(processing);
}

}  // namespace tembrix
