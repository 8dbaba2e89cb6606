#pragma once

#include <QtGlobal>
#include <string>

class QKeyEvent;

namespace tembrix {

// A key press in terms of the key tables. Keys are identified by their place, so that they do not
// depend on the keyboard layout.
struct NativeKey {
    int code = -1;         // virtual key code; -1 for modifiers and for keys outside the tables
    bool control = false;  // Control on a Mac, elsewhere Meta
    bool option = false;   // Alt
    bool shift = false;
    bool command = false;   // Command on a Mac, elsewhere Ctrl
    bool function = false;  // Fn, reported on a Mac only
    // The text that the key types without Ctrl, Alt and Meta, UTF-8. Arrow and function keys are
    // U+F700 and up. Empty for modifiers.
    std::string characters;
};

NativeKey translateKey(const QKeyEvent& event);

// The virtual key code for a scan code of X11 or Wayland, or of Windows including the extended bit;
// -1 if there is none. On a Mac, events contain the virtual key code.
int keyCodeOfScanCode(quint32 scanCode);
int keyCodeOfWindowsScanCode(quint32 scanCode);

}  // namespace tembrix
