#include "adapters/qt/native_keys.h"

#include <QKeyEvent>
#include <algorithm>
#include <array>

namespace tembrix {
namespace {

constexpr int none = -1;

struct Key {
    quint32 kernelCode;  // Linux key code; equal to the set-1 scan code if the key has one
    int code;            // virtual key code of the key tables
    int qtKey = 0;       // on an English keyboard, for events without a scan code
};

constexpr auto keys = std::to_array<Key>({
    {1, 53, Qt::Key_Escape},
    {2, 18, Qt::Key_1},
    {3, 19, Qt::Key_2},
    {4, 20, Qt::Key_3},
    {5, 21, Qt::Key_4},
    {6, 23, Qt::Key_5},
    {7, 22, Qt::Key_6},
    {8, 26, Qt::Key_7},
    {9, 28, Qt::Key_8},
    {10, 25, Qt::Key_9},
    {11, 29, Qt::Key_0},
    {12, 27, Qt::Key_Minus},
    {13, 24, Qt::Key_Equal},
    {14, 51, Qt::Key_Backspace},
    {15, 48, Qt::Key_Tab},
    {16, 12, Qt::Key_Q},
    {17, 13, Qt::Key_W},
    {18, 14, Qt::Key_E},
    {19, 15, Qt::Key_R},
    {20, 17, Qt::Key_T},
    {21, 16, Qt::Key_Y},
    {22, 32, Qt::Key_U},
    {23, 34, Qt::Key_I},
    {24, 31, Qt::Key_O},
    {25, 35, Qt::Key_P},
    {26, 33, Qt::Key_BracketLeft},
    {27, 30, Qt::Key_BracketRight},
    {28, 36, Qt::Key_Return},
    {30, 0, Qt::Key_A},
    {31, 1, Qt::Key_S},
    {32, 2, Qt::Key_D},
    {33, 3, Qt::Key_F},
    {34, 5, Qt::Key_G},
    {35, 4, Qt::Key_H},
    {36, 38, Qt::Key_J},
    {37, 40, Qt::Key_K},
    {38, 37, Qt::Key_L},
    {39, 41, Qt::Key_Semicolon},
    {40, 39, Qt::Key_Apostrophe},
    {41, 50, Qt::Key_QuoteLeft},
    {43, 42, Qt::Key_Backslash},
    {44, 6, Qt::Key_Z},
    {45, 7, Qt::Key_X},
    {46, 8, Qt::Key_C},
    {47, 9, Qt::Key_V},
    {48, 11, Qt::Key_B},
    {49, 45, Qt::Key_N},
    {50, 46, Qt::Key_M},
    {51, 43, Qt::Key_Comma},
    {52, 47, Qt::Key_Period},
    {53, 44, Qt::Key_Slash},
    {55, 67, 0},
    {57, 49, Qt::Key_Space},
    {59, 122, Qt::Key_F1},
    {60, 120, Qt::Key_F2},
    {61, 99, Qt::Key_F3},
    {62, 118, Qt::Key_F4},
    {63, 96, Qt::Key_F5},
    {64, 97, Qt::Key_F6},
    {65, 98, Qt::Key_F7},
    {66, 100, Qt::Key_F8},
    {67, 101, Qt::Key_F9},
    {68, 109, Qt::Key_F10},
    {69, 71, 0},
    {71, 89, 0},
    {72, 91, 0},
    {73, 92, 0},
    {74, 78, 0},
    {75, 86, 0},
    {76, 87, 0},
    {77, 88, 0},
    {78, 69, 0},
    {79, 83, 0},
    {80, 84, 0},
    {81, 85, 0},
    {82, 82, 0},
    {83, 65, 0},
    {86, 10, 0},
    {87, 103, Qt::Key_F11},
    {88, 111, Qt::Key_F12},
    {96, 76, Qt::Key_Enter},
    {98, 75, 0},
    {102, 115, Qt::Key_Home},
    {103, 126, Qt::Key_Up},
    {104, 116, Qt::Key_PageUp},
    {105, 123, Qt::Key_Left},
    {106, 124, Qt::Key_Right},
    {107, 119, Qt::Key_End},
    {108, 125, Qt::Key_Down},
    {109, 121, Qt::Key_PageDown},
    {110, 114, Qt::Key_Insert},
    {111, 117, Qt::Key_Delete},
    {183, 105, Qt::Key_F13},
    {184, 107, Qt::Key_F14},
    {185, 113, Qt::Key_F15},
    {186, 106, Qt::Key_F16},
    {187, 64, Qt::Key_F17},
    {188, 79, Qt::Key_F18},
    {189, 80, Qt::Key_F19},
    {190, 90, Qt::Key_F20},
});

// Keys whose scan codes have the extended bit on Windows.
struct ExtendedKey {
    quint32 scanCode;
    quint32 kernelCode;
};
constexpr auto extendedKeys = std::to_array<ExtendedKey>({
    {0x11C, 96},
    {0x135, 98},
    {0x145, 69},
    {0x147, 102},
    {0x148, 103},
    {0x149, 104},
    {0x14B, 105},
    {0x14D, 106},
    {0x14F, 107},
    {0x150, 108},
    {0x151, 109},
    {0x152, 110},
    {0x153, 111},
});

template <class Match>
int codeWhere(Match matches) {
    const auto found = std::find_if(keys.begin(), keys.end(), matches);
    return found == keys.end() ? none : found->code;
}

int codeOfKernelCode(quint32 kernelCode) {
    return codeWhere([&](const Key& key) { return key.kernelCode == kernelCode; });
}

int codeOfQtKey(int qtKey) {
    if (qtKey == Qt::Key_Backtab)
        qtKey = Qt::Key_Tab;
    return codeWhere([&](const Key& key) { return key.qtKey != 0 && key.qtKey == qtKey; });
}

// The virtual key code by the place of the key. Synthetic events have no place; their key is used.
int placeOf(const QKeyEvent& event) {
    const bool fromKeyboard = event.nativeScanCode() != 0 || event.nativeVirtualKey() != 0 ||
                              event.nativeModifiers() != 0;
    if (!fromKeyboard)
        return codeOfQtKey(event.key());
#if defined(Q_OS_MACOS)
    return static_cast<int>(event.nativeVirtualKey());
#elif defined(Q_OS_WINDOWS)
    return keyCodeOfWindowsScanCode(event.nativeScanCode());
#else
    return event.nativeScanCode() != 0 ? keyCodeOfScanCode(event.nativeScanCode())
                                       : codeOfQtKey(event.key());
#endif
}

bool isModifier(int key) {
    switch (key) {
        case Qt::Key_Shift:
        case Qt::Key_Control:
        case Qt::Key_Meta:
        case Qt::Key_Alt:
        case Qt::Key_AltGr:
        case Qt::Key_CapsLock:
        case Qt::Key_NumLock:
        case Qt::Key_ScrollLock:
        case Qt::Key_Super_L:
        case Qt::Key_Super_R:
            return true;
        default:
            return false;
    }
}

QString charactersOf(const QKeyEvent& event) {
    const int key = event.key();
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return QChar(0xF704 + key - Qt::Key_F1);
    switch (key) {
        case Qt::Key_Up:
            return QChar(0xF700);
        case Qt::Key_Down:
            return QChar(0xF701);
        case Qt::Key_Left:
            return QChar(0xF702);
        case Qt::Key_Right:
            return QChar(0xF703);
        case Qt::Key_Insert:
            return QChar(0xF727);
        case Qt::Key_Delete:
            return QChar(0xF728);
        case Qt::Key_Home:
            return QChar(0xF729);
        case Qt::Key_End:
            return QChar(0xF72B);
        case Qt::Key_PageUp:
            return QChar(0xF72C);
        case Qt::Key_PageDown:
            return QChar(0xF72D);
        case Qt::Key_Escape:
            return QChar(0x1B);
        case Qt::Key_Tab:
            return QChar('\t');
        case Qt::Key_Backtab:
            return QChar(0x19);
        case Qt::Key_Return:
            return QChar('\r');
        case Qt::Key_Enter:
            return QChar(0x03);
        case Qt::Key_Backspace:
            return QChar(0x7F);
        default:
            break;
    }
    auto text = event.text();
    if (!text.isEmpty() && text.front().isPrint())
        return text;
    // With Ctrl and similar modifiers, the event has no text or a control character.
    if (key > 0 && key < 0x110000) {
        const auto typed = QString::fromUcs4(reinterpret_cast<const char32_t*>(&key), 1);
        return event.modifiers() & Qt::ShiftModifier ? typed : typed.toLower();
    }
    return {};
}

}  // namespace

int keyCodeOfScanCode(quint32 scanCode) {
    constexpr quint32 first = 8;  // offset of X11 and Wayland key codes
    return scanCode > first ? codeOfKernelCode(scanCode - first) : none;
}

int keyCodeOfWindowsScanCode(quint32 scanCode) {
    const auto extended =
        std::find_if(extendedKeys.begin(), extendedKeys.end(),
                     [&](const ExtendedKey& key) { return key.scanCode == scanCode; });
    if (extended != extendedKeys.end())
        return codeOfKernelCode(extended->kernelCode);
    // Other keys have the same code as on Linux, except for Pause, which has that of NumLock.
    constexpr quint32 last = 0x58;
    constexpr quint32 pause = 0x45;
    return scanCode <= last && scanCode != pause ? codeOfKernelCode(scanCode) : none;
}

NativeKey translateKey(const QKeyEvent& event) {
    NativeKey result;
    const auto modifiers = event.modifiers();
    result.control = modifiers & Qt::MetaModifier;
    result.option = modifiers & Qt::AltModifier;
    result.shift = modifiers & Qt::ShiftModifier;
    result.command = modifiers & Qt::ControlModifier;
#ifdef Q_OS_MACOS
    constexpr quint32 functionFlag = 1U << 23;
    result.function = event.nativeModifiers() & functionFlag;
#endif
    if (isModifier(event.key()))
        return result;
    result.code = placeOf(event);
    result.characters = charactersOf(event).toStdString();
    return result;
}

}  // namespace tembrix
