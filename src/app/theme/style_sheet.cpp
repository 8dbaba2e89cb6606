#include "app/theme/style_sheet.h"

#include <QColor>
#include <utility>

#include "app/theme/theme.h"

namespace tembrix::theme {
namespace {

// Placeholders such as @text are replaced by the values of the theme.
constexpr auto sheet = R"(
QToolTip { color: @text; background: @raised; border: 1px solid @line; padding: 4px 6px; }
QLabel { background: transparent; }
QLabel[look="secondary"] { color: @secondaryText; }
QLabel[look="caption"] { color: @secondaryText; font-size: @captionSize; }
QLabel[look="title"] { font-size: @titleSize; font-weight: 600; }
QLabel[look="warning"] { color: @warning; }

QPushButton {
    color: @text; background: @raised; border: 1px solid @line; border-radius: @corner;
    min-height: 26px; padding: 0 12px;
}
QPushButton:hover { background: @hovered; }
QPushButton:pressed { background: @line; }
QPushButton:focus { border-color: @accent; }
QPushButton:disabled { color: @disabledText; }
QPushButton:checked { background: @accentFill; border-color: @accentFill; color: @onAccent; }
QPushButton:checked:focus { border-color: @text; }
QPushButton[look="accented"] {
    background: @accentFill; border-color: @accentFill; color: @onAccent; font-weight: 600;
}
QPushButton[look="accented"]:hover { background: @accentPressed; }
QPushButton[look="accented"]:focus { border-color: @text; }
QPushButton[look="accented"]:disabled {
    background: @raised; border-color: @line; color: @disabledText;
}
QPushButton[look="plain"] {
    background: transparent; border-color: transparent; padding: 8px 16px; min-height: 0;
}
QPushButton[look="plain"]:hover, QPushButton[look="plain"]:pressed { background: @hovered; }
QPushButton[look="plain"]:focus { border-color: @text; }
QPushButton[look="destructive"] { color: @destructive; }
QPushButton[look="destructive"]:focus { border-color: @destructive; }
QPushButton[look="destructive"]:disabled { color: @disabledText; }

QToolButton {
    color: @text; background: transparent; border: 1px solid transparent;
    border-radius: @corner; padding: 4px;
}
QToolButton:hover { background: @hovered; }
QToolButton:pressed { background: @line; }
QToolButton:focus { border-color: @accent; }
QToolButton:checked { background: @accentFill; color: @onAccent; }
QToolButton:checked:focus { border-color: @text; }
QToolButton:disabled { color: @disabledText; }
QToolButton[look="field"] {
    background: @raised; border: 1px solid @line; padding: 2px 8px; min-height: 18px;
    text-align: left;
}
QToolButton[look="field"]:hover { background: @hovered; }
QToolButton[look="field"]:focus { border-color: @accent; }
QToolButton[look="field"][doubtful="true"] { color: @warning; border-color: @warning; }
QToolButton[popupMode="2"] { padding-right: 16px; }
QToolButton::menu-indicator {
    subcontrol-origin: padding; subcontrol-position: center right; right: 3px;
}
QToolButton[segment="first"] { border-top-right-radius: 0; border-bottom-right-radius: 0; }
QToolButton[segment="middle"] { border-radius: 0; }
QToolButton[segment="last"] { border-top-left-radius: 0; border-bottom-left-radius: 0; }
QToolButton[segment="first"], QToolButton[segment="middle"], QToolButton[segment="last"] {
    background: @raised; border: 1px solid @line; padding: 0 12px; min-height: 26px;
}
QToolButton[segment="first"], QToolButton[segment="middle"] { border-right: none; }
QToolButton[segment]:hover { background: @hovered; }
QToolButton[segment]:checked { background: @accentFill; color: @onAccent; }
QToolButton[segment]:focus { border: 1px solid @text; }

QLineEdit, QPlainTextEdit, QTextEdit, QAbstractSpinBox {
    color: @text; background: @background; border: 1px solid @line; border-radius: @corner;
    padding: 0 8px; selection-background-color: @accentFill; selection-color: @onAccent;
}
QLineEdit, QAbstractSpinBox { min-height: 26px; }
QAbstractSpinBox { padding-right: 20px; }
QPlainTextEdit, QTextEdit { padding: 4px 6px; }
QLineEdit:focus, QPlainTextEdit:focus, QTextEdit:focus, QAbstractSpinBox:focus {
    border-color: @accent;
}
QLineEdit:disabled, QPlainTextEdit:disabled, QTextEdit:disabled, QAbstractSpinBox:disabled {
    color: @disabledText;
}
QAbstractSpinBox::up-button, QAbstractSpinBox::down-button {
    subcontrol-origin: border; width: 18px; background: transparent; border: none;
}
QAbstractSpinBox::up-button { subcontrol-position: top right; }
QAbstractSpinBox::down-button { subcontrol-position: bottom right; }
QAbstractSpinBox::up-arrow { image: url(:/theme/chevron-up.svg); width: 8px; height: 8px; }
QAbstractSpinBox::down-arrow, QComboBox::down-arrow, QDateTimeEdit::down-arrow {
    image: url(:/theme/chevron-down.svg); width: 8px; height: 8px;
}
QDateTimeEdit::drop-down {
    subcontrol-origin: border; subcontrol-position: center right; width: 22px; border: none;
}

QComboBox {
    color: @text; background: @raised; border: 1px solid @line; border-radius: @corner;
    min-height: 26px; padding: 0 24px 0 10px;
}
QComboBox:hover { background: @hovered; }
QComboBox:focus { border-color: @accent; }
QComboBox:disabled { color: @disabledText; }
QComboBox::drop-down { border: none; width: 22px; }
QComboBox QAbstractItemView {
    color: @text; background: @raised; border: 1px solid @line; outline: none;
    selection-background-color: @accentFill; selection-color: @onAccent;
}

QMenu { color: @text; background: @raised; border: 1px solid @line; padding: 4px; }
QMenu::item { padding: 5px 20px 5px 12px; border-radius: 4px; }
QMenu::item:selected { background: @accentFill; color: @onAccent; }
QMenu::item:disabled { color: @disabledText; background: transparent; }
QMenu#stampMenu::item:disabled { color: @secondaryText; }
QMenu::separator { height: 1px; background: @line; margin: 4px 8px; }
QMenuBar { color: @text; background: @background; spacing: 0; }
QMenuBar::item { padding: 4px 8px; background: transparent; border-radius: 4px; }
QMenuBar::item:selected { background: @hovered; }

QListView, QTreeView, QTableView {
    color: @text; background: @panel; alternate-background-color: @background;
    border: 1px solid @line; border-radius: @corner; outline: none;
    selection-background-color: @selection; selection-color: @text;
}
QListView:focus, QTreeView:focus, QTableView:focus { border-color: @accent; }
QListView#settingsPages { border: none; border-radius: 0; padding: 8px; }
QListView#settingsPages::item { color: @text; padding: 8px 10px; border-radius: @corner; }
QListView#settingsPages::item:hover { background: @hovered; }
QListView#settingsPages::item:selected { background: @line; }
QListView#settingsPages::item:selected:focus { background: @accent; color: @onAccent; }
QHeaderView::section {
    color: @secondaryText; background: @panel; border: none; border-bottom: 1px solid @line;
    padding: 4px 8px;
}
QScrollArea { background: transparent; border: none; }
QScrollBar { background: transparent; border: none; margin: 0; }
QScrollBar:vertical { width: 10px; }
QScrollBar:horizontal { height: 10px; }
QScrollBar::handle { background: @line; border-radius: 3px; margin: 2px; }
QScrollBar::handle:vertical { min-height: 28px; }
QScrollBar::handle:horizontal { min-width: 28px; }
QScrollBar::handle:hover { background: @disabledText; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }

QCheckBox, QRadioButton { color: @text; background: transparent; spacing: 8px; }
QCheckBox:disabled, QRadioButton:disabled { color: @disabledText; }
QCheckBox::indicator, QRadioButton::indicator, QAbstractItemView::indicator {
    width: 14px; height: 14px; border: 1px solid @edge; border-radius: 4px;
    background: @background;
}
QRadioButton::indicator { border-radius: 8px; }
QCheckBox::indicator:hover, QRadioButton::indicator:hover { border-color: @secondaryText; }
QCheckBox::indicator:focus, QRadioButton::indicator:focus { border-color: @accent; }
QCheckBox::indicator:checked, QAbstractItemView::indicator:checked {
    background: @accent; border-color: @accent; image: url(:/theme/check.svg);
}
QRadioButton::indicator:checked {
    background: @accent; border-color: @accent; image: url(:/theme/dot.svg);
}
QCheckBox::indicator:checked:focus, QRadioButton::indicator:checked:focus { border-color: @text; }
QCheckBox::indicator:disabled, QRadioButton::indicator:disabled { border-color: @line; }
QCheckBox::indicator:checked:disabled, QRadioButton::indicator:checked:disabled {
    background: @line; border-color: @line;
}

QProgressBar {
    background: @raised; border: none; border-radius: 3px; max-height: 6px; color: transparent;
}
QProgressBar::chunk { background: @accent; border-radius: 3px; }
QSlider::groove:horizontal { height: 4px; background: @line; border-radius: 2px; }
QSlider::sub-page:horizontal { background: @accent; border-radius: 2px; }
QSlider::handle:horizontal {
    width: 14px; height: 14px; margin: -5px 0; border-radius: 7px; background: @text;
}
QSlider::handle:horizontal:focus { background: @accent; }
QSplitter::handle { background: @line; }
QSplitter::handle:horizontal { width: 1px; }
QSplitter::handle:vertical { height: 1px; }

QDialog[look="message"], QFileDialog { background: @panel; border: 1px solid @edge; }
QFrame[look="drop"] { background: @selection; border: 2px solid @accent; }
QFrame[look="panel"] { background: @panel; border: none; }
QFrame[look="card"] { background: @raised; border: 1px solid @line; border-radius: @corner; }
QFrame[look="separator"] { background: @line; border: none; }
)";

}  // namespace

QString styleSheet() {
    const auto hex = [](const QColor& c) {
        return QString("rgba(%1,%2,%3,%4)")
            .arg(c.red())
            .arg(c.green())
            .arg(c.blue())
            .arg(c.alphaF());
    };
    const auto pixels = [](int size) { return QString::number(size) + "px"; };
    // A name that starts with another name is listed before it.
    const std::pair<const char*, QString> values[] = {
        {"@background", hex(background)},
        {"@panel", hex(panel)},
        {"@raised", hex(raised)},
        {"@hovered", hex(hovered)},
        {"@line", hex(line)},
        {"@edge", hex(edge)},
        {"@text", hex(text)},
        {"@secondaryText", hex(secondaryText)},
        {"@disabledText", hex(disabledText)},
        {"@accentPressed", hex(accentPressed)},
        {"@accentFill", hex(accentFill)},
        {"@accent", hex(accent)},
        {"@onAccent", hex(onAccent)},
        {"@destructive", hex(destructive)},
        {"@warning", hex(warning)},
        {"@selection", hex(selection)},
        {"@corner", pixels(corner)},
        {"@captionSize", pixels(captionSize)},
        {"@titleSize", pixels(titleSize)},
    };
    QString result = sheet;
    for (const auto& [name, value] : values)
        result.replace(name, value);
    return result;
}

}  // namespace tembrix::theme
