#pragma once

#include <functional>

#include "base/result.h"

#include "app/library/list_services.h"
#include "app/widgets/controls.h"
#include "app/widgets/sheet.h"
#include "core/safety/data_sync_manager.h"
#include "core/safety/replaced_data.h"

namespace tembrix {

// Explains the two stores, starts the backup operations and lists the states that earlier restores
// replaced. Operations run in the background; a status line is shown in place of the buttons
// meanwhile.
class DataManagementSheet final : public Sheet {
    Q_OBJECT

  public:
    DataManagementSheet(QWidget* parent, const ListServices& services, DataSyncManager& dataSync);

    void reject() override;  // ignored while an operation runs

  private:
    void addStore(const char* titleKey, const char* descriptionKey, const char* helpKey,
                  std::function<std::filesystem::path()> folder);
    void sayFolderFailed(const std::filesystem::path& folder);
    void addAction(const char* titleKey, const char* descriptionKey, ButtonLook look,
                   std::function<void()> pressed);
    void showReplacedStates();
    void addReplacedState(QVBoxLayout* column, const ReplacedData::State& state, int number);
    void confirm(const char* titleKey, const char* messageKey, const char* buttonKey,
                 ButtonLook look, std::function<void()> confirmed);
    void process(std::function<Result<void>()> work, const char* successKey,
                 const char* failureKey);
    void setProcessing(bool processing);

    const ListServices services_;
    DataSyncManager& dataSync_;
    QWidget* actions_;
    QWidget* replaced_;               // contains a row for each state that can be restored
    QWidget* states_ = nullptr;       // those rows
    QPushButton* pressed_ = nullptr;  // the action that was started last
    QPushButton* close_;
    QLabel* status_;
    bool isProcessing_ = false;
};

}  // namespace tembrix
