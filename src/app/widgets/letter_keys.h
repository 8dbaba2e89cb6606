#pragma once

#include <QKeySequence>
#include <QList>

namespace tembrix {

// A shortcut for a letter by its place on the keyboard. A Russian layout sends Cyrillic letters,
// and Qt finds the Latin ones only if a Latin layout is installed as well.
inline QList<QKeySequence> letterKeys(Qt::KeyboardModifiers modifiers, Qt::Key letter) {
    QList<QKeySequence> keys{QKeyCombination(modifiers, letter)};
    if (letter == Qt::Key_Q)
        keys.append(QKeyCombination(modifiers, Qt::Key(u'Й')));
    if (letter == Qt::Key_Z)
        keys.append(QKeyCombination(modifiers, Qt::Key(u'Я')));
    return keys;
}

}  // namespace tembrix
