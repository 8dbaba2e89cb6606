#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "ports/texts.h"

#include "app/widgets/qt_text.h"

namespace tembrix {

// Calls `show` now and after each change of the language, for as long as the owner lives.
void followLanguage(QObject* owner, const Texts& texts, std::function<void()> show);

// Shows the text of a key, in the present language, until something else is shown in its place.
template <class Widget, class Base>
void showText(Widget* widget, const Texts& texts, std::string_view key,
              QString (Base::*shown)() const, void (Base::*show)(const QString&)) {
    (widget->*show)(qtext(texts.text(key)));
    followLanguage(
        widget, texts,
        [widget, &texts, key = std::string(key), shown, show, last = (widget->*shown)()]() mutable {
            if ((widget->*shown)() != last)
                return;
            (widget->*show)(qtext(texts.text(key)));
            last = (widget->*shown)();
        });
}

}  // namespace tembrix
