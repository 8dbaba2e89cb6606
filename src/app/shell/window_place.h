#pragma once

#include <QMargins>
#include <QObject>
#include <QRect>
#include <QTimer>
#include <optional>
#include <string>

class QWidget;

namespace tembrix {

class UserDefaults;

// Places a top-level window, including its decoration, and remembers where the user has put it.
class WindowPlace final : public QObject {
    Q_OBJECT

  public:
    // Nothing is remembered without defaults. They must outlive the object, like the window.
    WindowPlace(QWidget& window, UserDefaults* defaults, const std::string& name);

    // Called before the window is shown. Uses the remembered frame, moved to the screens that are
    // present, or else `first`; without either, the window keeps its size. A window that is
    // exactly in its first frame is not remembered, so that the first frame can follow the screen.
    void begin(const std::optional<QRect>& first = {});

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void place(const QRect& frame);
    void fit(const QMargins& decoration);
    void restore();
    void remember();

    QWidget& window_;
    UserDefaults* defaults_;
    const std::string key_;
    std::optional<QRect> first_;
    std::optional<QRect> frame_;  // the area to fill while the window appears
    std::optional<QMargins>
        fitted_;  // the decoration that the contents of this size leave room for
    QTimer settled_;
    QTimer changed_;  // runs after a change until the place is stored
};

}  // namespace tembrix
