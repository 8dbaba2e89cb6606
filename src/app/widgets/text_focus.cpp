#include "app/widgets/text_focus.h"

#include <QEvent>
#include <QFocusEvent>

#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/text_focus.h"

namespace tembrix {

TextFocusTracker::TextFocusTracker(QWidget* field, FocusStateManager& focus)
    : QObject(field), focus_(focus) {
    field->installEventFilter(this);
    setFocused(field->hasFocus());
}

TextFocusTracker::~TextFocusTracker() {
    setFocused(false);
}

bool TextFocusTracker::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::FocusIn:
            setFocused(true);
            break;
        case QEvent::FocusOut:
            // The field's own context menu takes the focus only temporarily.
            if (static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason)
                setFocused(false);
            break;
        case QEvent::Hide:
            setFocused(false);
            break;
        default:
            break;
    }
    return false;
}

void TextFocusTracker::setFocused(bool focused) {
    if (focused_ == focused)
        return;
    focused_ = focused;
    focus_.setTextFieldFocused(focused);
}

FocusAwareLineEdit::FocusAwareLineEdit(FocusStateManager& focus, QWidget* parent)
    : QLineEdit(parent) {
    new TextFocusTracker(this, focus);
}

}  // namespace tembrix
