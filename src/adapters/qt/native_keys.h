#pragma once

#include <QtGlobal>
#include <string>

class QKeyEvent;

namespace tembrix {

// A key press in the terms of the key tables: keys by their place, so that a keyboard layout for
// another script changes nothing.
struct NativeKey {
    int code = -1;  // virtual key code; -1 for a key outside the tables and for a modifier itself
    bool control = false;  // Control on a Mac, elsewhere the Meta key
    bool option = false;   // Alt
    bool shift = false;
    bool command = false;    // Command on a Mac, elsewhere Ctrl
    bool function = false;   // Fn, which only a Mac tells
    std::string characters;  // what the key types without Ctrl, Alt and Meta, UTF-8; the arrows,
                             // function keys and the like are U+F700 and up; empty for a modifier
};

NativeKey translateKey(const QKeyEvent& event);

// The virtual key code for the scan code of a key event of X11 or Wayland, and of Windows with the
// extended bit; -1 if there is none. A Mac tells the virtual key code itself.
int keyCodeOfScanCode(quint32 scanCode);
int keyCodeOfWindowsScanCode(quint32 scanCode);

}  // namespace tembrix
