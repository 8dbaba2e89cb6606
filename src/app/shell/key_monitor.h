#pragma once

#include <QObject>
#include <functional>

#include "core/commands/key_router.h"
#include "core/keyboard/hot_key_codes.h"

class QKeyEvent;

namespace tembrix {

// Receives every key press of the program before any view does and passes it to the key router. It
// is the only filter of the whole application.
class KeyMonitor final : public QObject {
    Q_OBJECT

  public:
    // `translate` turns a native key event into the key tables' terms.
    using Translate = std::function<KeyPress(const QKeyEvent& event)>;

    KeyMonitor(KeyRouter& router, Translate translate);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    bool isHeldReturn(const QKeyEvent& press) const;

    KeyRouter& router_;
    Translate translate_;
    quint64 returnReleased_ = 0;  // the time of its last release
};

}  // namespace tembrix
