#pragma once

#include <QWidget>
#include <vector>

#include "base/signal.h"

#include "app/settings/settings_services.h"
#include "core/commands/command_table.h"

class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace tembrix {

class KeyEditor;

// All commands by menu with their keys and what stands against them, and the keys of the chosen
// command to change. Return records a key.
class KeysPage final : public QWidget {
    Q_OBJECT
  public:
    explicit KeysPage(const SettingsServices& services, QWidget* parent = nullptr);

  private:
    void makeRows();
    void showRows();
    void showRow(QTreeWidgetItem* row, Command command);
    void filter();
    QTreeWidgetItem* chosen() const;

    const SettingsServices& services_;
    QLineEdit* search_;
    QTreeWidget* rows_;
    QWidget* nothing_;
    KeyEditor* editor_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
