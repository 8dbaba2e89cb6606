#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QString>

#include "base/color.h"

class QApplication;

// The colors of the user interface, and the sizes that several views share. Widgets are styled by
// applyTheme(); painters use the values below.
namespace tembrix::theme {

inline constexpr QColor background{0x1C, 0x1C, 0x1E};
inline constexpr QColor panel{0x24, 0x24, 0x26};
inline constexpr QColor raised{0x2C, 0x2C, 0x2E};
inline constexpr QColor hovered{0x36, 0x36, 0x38};
inline constexpr QColor line{0x3A, 0x3A, 0x3C};
inline constexpr QColor edge{0x54, 0x54,
                             0x58};  // the edge of popups and of controls that need an outline
inline constexpr QColor text{0xF2, 0xF2, 0xF7};
inline constexpr QColor secondaryText{0xAE, 0xAE, 0xB2};
inline constexpr QColor disabledText{0x6C, 0x6C, 0x70};
inline constexpr QColor accent{0x0A, 0x84, 0xFF};
inline constexpr QColor accentFill{0x00, 0x70, 0xE0};  // under a text
inline constexpr QColor accentPressed{0x06, 0x6A, 0xD1};
inline constexpr QColor onAccent{0xFF, 0xFF, 0xFF};
inline constexpr QColor playhead{0xFF, 0x45, 0x3A};
inline constexpr QColor destructive{0xFF, 0x45, 0x3A};
inline constexpr QColor warning{0xFF, 0x9F, 0x0A};
inline constexpr QColor success{0x30, 0xD1, 0x58};
inline constexpr QColor star{0xFF, 0xD6, 0x0A};
inline constexpr QColor picture{0x00, 0x00, 0x00};          // background of a video
inline constexpr QColor veil{0x00, 0x00, 0x00, 0xCC};       // under a waiting panel
inline constexpr QColor selection{0x0A, 0x84, 0xFF, 0x40};  // a selected row or line
inline constexpr QColor grid{0xFF, 0xFF, 0xFF, 0x1E};       // time grid lines

inline constexpr int unit = 4;  // all distances are multiples of it
inline constexpr int corner = 6;
inline constexpr int margin = 12;
inline constexpr int spacing = 8;
inline constexpr int controlHeight = 28;
inline constexpr int nameFieldWidth = 320;  // of a field for a name
inline constexpr int iconSize = 16;
inline constexpr int captionSize = 11;  // text sizes in pixels
inline constexpr int textSize = 13;
inline constexpr int titleSize = 17;
inline constexpr int timeCodeSize = 20;

// Sets style, palette, font, icon theme and style sheet. Call once, before the first window is
// created.
void applyTheme(QApplication& application);

// The program's font.
QFont font(int pixelSize = textSize, QFont::Weight weight = QFont::Normal);

// A freedesktop icon in one color; dimmed where its control is disabled.
QIcon icon(const QString& name, const QColor& color = text);

// Converts a color of the user's data.
QColor toQColor(const Color& color);

// Black or white, whichever is more readable on the background.
QColor textOn(const QColor& ground);

}  // namespace tembrix::theme
