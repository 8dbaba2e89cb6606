#pragma once

#include "ports/texts.h"

#include "app/widgets/sheet.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"

namespace tembrix {

// Lists the keys of a window.
class KeysSheet final : public Sheet {
    Q_OBJECT
  public:
    KeysSheet(QWidget* window, const Commands& commands, CommandScope scope, const Texts& texts);
};

}  // namespace tembrix
