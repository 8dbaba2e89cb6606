#pragma once

#include <QString>

#include "ports/texts.h"

#include "app/widgets/sheet.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"

class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace tembrix {

class FocusStateManager;

// The search over all commands of a window. Typing filters them; Return or a click closes the sheet
// and runs the chosen one. Commands that are not enabled now are shown but cannot be chosen.
class CommandPalette final : public Sheet {
    Q_OBJECT
  public:
    CommandPalette(QWidget* window, Commands& commands, CommandScope scope, const Texts& texts,
                   FocusStateManager& focus);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void addRows(CommandScope scope);
    void filter(const QString& text);
    void choose(const QTreeWidgetItem* row);

    Commands& commands_;
    QLineEdit* search_;
    QTreeWidget* rows_;
    QWidget* nothing_;
};

}  // namespace tembrix
