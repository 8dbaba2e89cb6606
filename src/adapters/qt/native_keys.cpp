#include "adapters/qt/native_keys.h"

#include <QHash>
#include <QKeyEvent>
#include <array>
#include <utility>

namespace tembrix {
namespace {

constexpr int none = -1;

// By the kernel's key code. X11 and Wayland count from 8.
constexpr std::array<int, 112> byKernelCode = {
    /*   0 */ none,
    53,
    18,
    19,
    20,
    21,
    23,
    22,
    26,
    28,  // Esc 1-8
    /*  10 */ 25,
    29,
    27,
    24,
    51,
    48,
    12,
    13,
    14,
    15,  // 9 0 - = Backspace Tab Q-R
    /*  20 */ 17,
    16,
    32,
    34,
    31,
    35,
    33,
    30,
    36,
    none,  // T-P [ ] Return Ctrl
    /*  30 */ 0,
    1,
    2,
    3,
    5,
    4,
    38,
    40,
    37,
    41,  // A-L ;
    /*  40 */ 39,
    50,
    none,
    42,
    6,
    7,
    8,
    9,
    11,
    45,  // ' ` Shift backslash Z-N
    /*  50 */ 46,
    43,
    47,
    44,
    none,
    67,
    none,
    49,
    none,
    122,  // M , . / Shift KP* Alt Space Caps F1
    /*  60 */ 120,
    99,
    118,
    96,
    97,
    98,
    100,
    101,
    109,
    71,  // F2-F10 NumLock
    /*  70 */ none,
    89,
    91,
    92,
    78,
    86,
    87,
    88,
    69,
    83,  // ScrollLock KP7-9 - 4-6 + 1
    /*  80 */ 84,
    85,
    82,
    65,
    none,
    none,
    10,
    103,
    111,
    none,  // KP2 3 0 . 102nd F11 F12
    /*  90 */ none,
    none,
    none,
    none,
    none,
    none,
    76,
    none,
    75,
    none,  // KPEnter Ctrl KP/
    /* 100 */ none,
    none,
    115,
    126,
    116,
    123,
    124,
    119,
    125,
    121,  // Alt Home Up PgUp Left Right End Down PgDn
    /* 110 */ 114,
    117,  // Insert Delete
};

// Keys of the tables by what they type on an English keyboard: for events without a scan code.
const QHash<int, quint32>& kernelCodeByKey() {
    static const QHash<int, quint32> codes = [] {
        QHash<int, quint32> result;
        const auto row = [&](const char* keys, quint32 first) {
            for (; *keys; ++keys)
                result.insert(*keys, first++);
        };
        row("1234567890-=", 2);
        row("QWERTYUIOP[]", 16);
        row("ASDFGHJKL;'`", 30);
        row("\\ZXCVBNM,./", 43);
        for (int i = 0; i < 10; ++i)
            result.insert(Qt::Key_F1 + i, static_cast<quint32>(59 + i));
        const std::pair<int, quint32> named[] = {
            {Qt::Key_Escape, 1},   {Qt::Key_Backspace, 14}, {Qt::Key_Tab, 15},
            {Qt::Key_Backtab, 15}, {Qt::Key_Return, 28},    {Qt::Key_Space, 57},
            {Qt::Key_F11, 87},     {Qt::Key_F12, 88},       {Qt::Key_Enter, 96},
            {Qt::Key_Home, 102},   {Qt::Key_Up, 103},       {Qt::Key_PageUp, 104},
            {Qt::Key_Left, 105},   {Qt::Key_Right, 106},    {Qt::Key_End, 107},
            {Qt::Key_Down, 108},   {Qt::Key_PageDown, 109}, {Qt::Key_Insert, 110},
            {Qt::Key_Delete, 111}};
        for (const auto& [key, code] : named)
            result.insert(key, code);
        return result;
    }();
    return codes;
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
    const auto text = event.text();
    if (!text.isEmpty() && text.front().isPrint())
        return text;
    // Ctrl and its like take the text away or make a control character of it.
    if (key > 0 && key < 0x110000) {
        const auto typed = QString::fromUcs4(reinterpret_cast<const char32_t*>(&key), 1);
        return event.modifiers() & Qt::ShiftModifier ? typed : typed.toLower();
    }
    return {};
}

}  // namespace

int keyCodeOfScanCode(quint32 scanCode) {
    return scanCode >= 8 && scanCode - 8 < byKernelCode.size() ? byKernelCode[scanCode - 8] : none;
}

NativeKey translateKey(const QKeyEvent& event) {
    NativeKey result;
    const auto modifiers = event.modifiers();
    result.control = modifiers & Qt::MetaModifier;
    result.option = modifiers & Qt::AltModifier;
    result.shift = modifiers & Qt::ShiftModifier;
    result.command = modifiers & Qt::ControlModifier;
    if (isModifier(event.key()))
        return result;
    if (event.nativeScanCode() != 0)
        result.code = keyCodeOfScanCode(event.nativeScanCode());
    else if (const auto code = kernelCodeByKey().constFind(event.key());
             code != kernelCodeByKey().constEnd())
        result.code = keyCodeOfScanCode(*code + 8);
    result.characters = charactersOf(event).toStdString();
    return result;
}

}  // namespace tembrix
