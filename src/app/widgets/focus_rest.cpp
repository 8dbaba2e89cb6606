#include "app/widgets/focus_rest.h"

#include <QVariant>
#include <QWidget>

namespace tembrix {
namespace {

constexpr const char* property = "focusRests";

}  // namespace

void restFocusOn(QWidget* content) {
    content->setProperty(property, true);
    content->setFocus();
}

QWidget* focusRest(const QWidget* control) {
    for (QWidget* parent = control->parentWidget(); parent; parent = parent->parentWidget())
        if (parent->property(property).toBool())
            return parent;
    return nullptr;
}

}  // namespace tembrix
