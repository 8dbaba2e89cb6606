#pragma once

#include <QKeyEvent>
#include <functional>
#include <utility>
#include <vector>

#include "adapters/qt/native_keys.h"
#include "app/commands/command_menu_bar.h"
#include "app/shell/key_monitor.h"
#include "app/shell/shell_commands.h"
#include "core/commands/key_router.h"
#include "core/keyboard/hot_key_codes.h"

namespace tembrix {

// The keys and the general commands of the program for a window that a test shows by itself.
struct WindowKeys {
    KeyRouter router;
    KeyMonitor monitor{router, &translate};
    ShellCommands shell;

    WindowKeys(
        Commands& commands, FocusStateManager& focus, const Texts& texts,
        std::function<HotKeyManager*()> hotkeys = [] { return nullptr; },
        ShellCommands::Windows windows = [] { return std::vector<QWidget*>(); })
        : router(commands, std::move(hotkeys)), shell(commands, focus, texts, std::move(windows)) {}

    // Makes the widget a window in which the commands of the scope work.
    static void giveMenus(QWidget& window, Commands& commands, const Texts& texts,
                          CommandScope scope) {
        (new CommandMenuBar(commands, texts, scope, &window))->hide();
    }

    static KeyPress translate(const QKeyEvent& event) {
        NativeKey native = translateKey(event);
        return {native.code,
                {native.control, native.option, native.shift, native.command, native.function},
                std::move(native.characters)};
    }
};

}  // namespace tembrix
