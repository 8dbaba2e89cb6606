#pragma once

#include <QObject>
#include <functional>

#include "core/keyboard/hot_key_codes.h"
#include "core/keyboard/hot_key_manager.h"

class QKeyEvent;

namespace tembrix {

// Looks at every key press of the program before any view gets it and hands it to the hot keys.
class KeyMonitor final : public QObject {
    Q_OBJECT

  public:
    // `translate` turns a native key event into the key tables' terms.
    using Translate = std::function<KeyPress(const QKeyEvent& event)>;

    // `hotkeys` gives those of the open project, null without one.
    KeyMonitor(std::function<HotKeyManager*()> hotkeys, Translate translate);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<HotKeyManager*()> hotkeys_;
    Translate translate_;
};

}  // namespace tembrix
