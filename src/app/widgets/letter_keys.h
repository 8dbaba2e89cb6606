#pragma once

#include <QKeySequence>
#include <QList>

namespace tembrix {

// A shortcut on the place of a letter. A keyboard with Russian letters alone sends those, and the
// toolkit looks for a Latin one only where such a layout stands beside it.
inline QList<QKeySequence> letterKeys(Qt::KeyboardModifiers modifiers, Qt::Key letter) {
    QList<QKeySequence> keys{QKeyCombination(modifiers, letter)};
    if (letter == Qt::Key_Q)
        keys.append(QKeyCombination(modifiers, Qt::Key(u'Й')));
    if (letter == Qt::Key_Z)
        keys.append(QKeyCombination(modifiers, Qt::Key(u'Я')));
    return keys;
}

}  // namespace tembrix
