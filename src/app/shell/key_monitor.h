#pragma once

#include <QObject>
#include <functional>

#include "core/keyboard/hot_key_codes.h"
#include "core/keyboard/hot_key_manager.h"

class QKeyEvent;

namespace tembrix {

// Passes every key press of the program to the hot keys before any view receives it.
class KeyMonitor final : public QObject {
    Q_OBJECT

  public:
    // `translate` converts a native key event to a key press of the key tables.
    using Translate = std::function<KeyPress(const QKeyEvent& event)>;

    // `hotkeys` returns the hot keys of the open project, or null.
    KeyMonitor(std::function<HotKeyManager*()> hotkeys, Translate translate);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<HotKeyManager*()> hotkeys_;
    Translate translate_;
};

}  // namespace tembrix
