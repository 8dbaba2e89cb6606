#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <string_view>

#include "ports/texts.h"

#include "core/keyboard/hot_key_codes.h"
#include "core/keyboard/key_capture.h"

class QKeyEvent;

namespace tembrix {

// The field in which a user records a hot key. It grabs keyboard and mouse during a capture and
// shows the recorded keys with the names printed on the keyboard. The owner starts the capture on
// the KeyCapture, which must outlive the view.
class KeyCaptureView final : public QWidget {
    Q_OBJECT

  public:
    // `translate` converts a native key event to a key press of the key tables.
    using Translate = std::function<KeyPress(const QKeyEvent& event)>;

    // The text of `key` names the control and is shown while no hot key is recorded.
    KeyCaptureView(KeyCapture& capture, Translate translate, const Texts& texts,
                   std::string_view key, QWidget* parent = nullptr);

    QString shownText() const;
    bool isCapturing() const { return *capture_.isCapturing; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void follow(bool capturing);
    void showHotkey();

    KeyCapture& capture_;
    Translate translate_;
    QString prompt_;
    Subscription captured_;
    Subscription capturing_;
};

}  // namespace tembrix
