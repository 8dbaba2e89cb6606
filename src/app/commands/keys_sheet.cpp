#include "app/commands/keys_sheet.h"

#include <QTreeWidget>

#include "app/commands/command_rows.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/qt_text.h"
#include "core/commands/key_list.h"

namespace tembrix {

KeysSheet::KeysSheet(QWidget* window, const Commands& commands, CommandScope scope,
                     const Texts& texts)
    : Sheet(window, texts, "commandShowKeys") {
    QTreeWidget* rows = makeCommandRows(texts, "keysTitle");
    rows->setMinimumHeight(420);
    tellRows(rows, {.pressed = false});
    for (const KeySection& section : keySections(commands, texts, scope)) {
        auto* title = new QTreeWidgetItem(rows, {qtext(section.title)});
        title->setFont(0, theme::font(theme::textSize, QFont::DemiBold));
        title->setFirstColumnSpanned(true);
        for (const KeyLine& line : section.lines)
            new QTreeWidgetItem(rows, {"    " + qtext(line.text), qtext(line.keys)});
    }
    rows->setCurrentItem(rows->topLevelItem(0));
    content()->addWidget(rows, 1);
    addAcceptButton("closeButtonTitle");
    rows->setFocus();
}

}  // namespace tembrix
