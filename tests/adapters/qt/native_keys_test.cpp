#include "adapters/qt/native_keys.h"

#include <QKeyEvent>
#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace tembrix {
namespace {

NativeKey press(int key, quint32 scanCode, Qt::KeyboardModifiers modifiers, const QString& text) {
    return translateKey(
        QKeyEvent(QEvent::KeyPress, key, modifiers, scanCode, 0, 0, text, false, 1));
}

// Scan codes of the rows of a keyboard, from left to right, with the virtual key codes.
TEST(NativeKeys, EachKeyHasTheCodeOfItsPlace) {
    const std::map<quint32, std::vector<int>> rows = {
        {10, {18, 19, 20, 21, 23, 22, 26, 28, 25, 29, 27, 24}},
        {24, {12, 13, 14, 15, 17, 16, 32, 34, 31, 35, 33, 30}},
        {38, {0, 1, 2, 3, 5, 4, 38, 40, 37, 41, 39, 50}},
        {51, {42, 6, 7, 8, 9, 11, 45, 46, 43, 47, 44}},
        {67, {122, 120, 99, 118, 96, 97, 98, 100, 101, 109}}};
    for (const auto& [first, codes] : rows)
        for (std::size_t i = 0; i < codes.size(); ++i)
            EXPECT_EQ(keyCodeOfScanCode(first + static_cast<quint32>(i)), codes[i]);
    const std::map<quint32, int> single = {{9, 53},    {22, 51},   {23, 48},   {36, 36},
                                           {65, 49},   {95, 103},  {96, 111},  {110, 115},
                                           {111, 126}, {112, 116}, {113, 123}, {114, 124},
                                           {115, 119}, {116, 125}, {117, 121}, {118, 114}};
    for (const auto& [scan, code] : single)
        EXPECT_EQ(keyCodeOfScanCode(scan), code);
    for (const quint32 outside : {0U, 7U, 8U, 120U, 5000U, 0xFFFFFFFFU})
        EXPECT_EQ(keyCodeOfScanCode(outside), -1);
    // On Windows, the main block has the same codes. One bit distinguishes arrow keys from the
    // numeric keypad.
    for (quint32 scan = 1; scan <= 0x39; ++scan)
        EXPECT_EQ(keyCodeOfWindowsScanCode(scan), keyCodeOfScanCode(scan + 8));
    const std::map<quint32, int> windows = {{0x3B, 122},  {0x44, 109},  {0x57, 103},  {0x58, 111},
                                            {0x4B, 86},   {0x14B, 123}, {0x14D, 124}, {0x148, 126},
                                            {0x150, 125}, {0x147, 115}, {0x14F, 119}, {0x149, 116},
                                            {0x151, 121}, {0x152, 114}, {0x153, 117}, {0x11C, 76},
                                            {0x56, 10},   {0x145, 71},  {0x45, -1},   {0x15B, -1}};
    for (const auto& [scan, code] : windows)
        EXPECT_EQ(keyCodeOfWindowsScanCode(scan), code) << scan;
    std::map<int, quint32> seen;
    for (quint32 scan = 8; scan < 200; ++scan) {
        const int code = keyCodeOfScanCode(scan);
        EXPECT_TRUE(code < 0 || seen.emplace(code, scan).second) << code;
    }
}

TEST(NativeKeys, TheLayoutChangesNothingButTheCharacters) {
    const auto latin = press(Qt::Key_A, 38, {}, "a");
    const auto russian = press(0x0424, 38, {}, "ф");
    EXPECT_EQ(latin.code, 0);
    EXPECT_EQ(russian.code, 0);
    EXPECT_EQ(russian.characters, "ф");
    const auto copy = press(0x0421, 54, Qt::ControlModifier, "\x03");
    EXPECT_EQ(copy.code, 8);
    EXPECT_TRUE(copy.command);
    EXPECT_FALSE(copy.control);
    EXPECT_EQ(copy.characters, "с");
    const auto shifted = press(Qt::Key_Exclam, 10, Qt::ShiftModifier | Qt::MetaModifier, "");
    EXPECT_EQ(shifted.code, 18);
    EXPECT_EQ(shifted.characters, "!");
    EXPECT_TRUE(shifted.shift);
    EXPECT_TRUE(shifted.control);
    EXPECT_TRUE(press(Qt::Key_Left, 113, Qt::AltModifier, "").option);
}

TEST(NativeKeys, ModifiersAndNamedKeys) {
    const auto shift = press(Qt::Key_Shift, 50, {}, "");
    EXPECT_EQ(shift.code, -1);
    EXPECT_TRUE(shift.shift);
    EXPECT_TRUE(shift.characters.empty());
    EXPECT_EQ(press(Qt::Key_Up, 111, {}, "").characters, "\uF700");
    EXPECT_EQ(press(Qt::Key_Right, 114, {}, "").characters, "\uF703");
    EXPECT_EQ(press(Qt::Key_F5, 71, {}, "").characters, "\uF708");
    EXPECT_EQ(press(Qt::Key_Return, 36, {}, "\r").characters, "\r");
    EXPECT_EQ(press(Qt::Key_Space, 65, {}, " ").characters, " ");
    EXPECT_EQ(press(Qt::Key_MediaPlay, 172, {}, "").code, -1);
    // Synthetic events have no scan code.
    EXPECT_EQ(press(Qt::Key_Space, 0, {}, " ").code, 49);
    EXPECT_EQ(press(Qt::Key_Return, 0, {}, "\r").code, 36);
    EXPECT_EQ(press(Qt::Key_Z, 0, Qt::ControlModifier, "").code, 6);
    EXPECT_EQ(press(Qt::Key_F12, 0, {}, "").code, 111);
}

}  // namespace
}  // namespace tembrix
