#include "app/widgets/key_capture_view.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>
#include <string>
#include <utility>

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

namespace tembrix {

namespace {

constexpr int widest = 160;  // for the longest hot key: all modifiers and "Page Down"

bool isModifier(int key) {
    switch (key) {
        case Qt::Key_Shift:
        case Qt::Key_Control:
        case Qt::Key_Alt:
        case Qt::Key_AltGr:
        case Qt::Key_Meta:
        case Qt::Key_Super_L:
        case Qt::Key_Super_R:
            return true;
        default:
            return false;
    }
}

// The modifiers held after the event. On some systems the event of a modifier key itself reports
// those held before.
KeyModifiers heldAfter(const QKeyEvent& event, KeyModifiers told) {
    const bool down = event.type() == QEvent::KeyPress;
    switch (event.key()) {
        case Qt::Key_Shift:
            told.shift = down;
            break;
        case Qt::Key_Control:
            told.command = down;
            break;
        case Qt::Key_Alt:
        case Qt::Key_AltGr:
            told.option = down;
            break;
        default:
            told.control = down;
    }
    return told;
}

}  // namespace

KeyCaptureView::KeyCaptureView(KeyCapture& capture, Translate translate, const Texts& texts,
                               std::string_view key, QWidget* parent)
    : QWidget(parent), capture_(capture), translate_(std::move(translate)) {
    nameControl(this, texts, key);
    tellRole(this, QAccessible::HotkeyField);
    setFixedHeight(theme::controlHeight);
    setFocusPolicy(Qt::StrongFocus);
    captured_ = capture_.keyString.observe([this](const auto&) { showHotkey(); });
    capturing_ = capture_.isCapturing.observe([this](bool capturing) { follow(capturing); });
    follow(*capture_.isCapturing);
    followLanguage(this, texts, [this, &texts, key = std::string(key)] {
        prompt_ = qtext(texts.text(key));
        showHotkey();
    });
}

QString KeyCaptureView::shownText() const {
    const auto& recorded = *capture_.keyString;
    return recorded && !recorded->empty() ? qtext(hotkeyCaption(*recorded)) : prompt_;
}

QSize KeyCaptureView::sizeHint() const {
    return {widest, theme::controlHeight};
}

// Mouse events pass through the view unless a capture is running.
void KeyCaptureView::follow(bool capturing) {
    setAttribute(Qt::WA_TransparentForMouseEvents, !capturing);
    if (capturing)
        setFocus(Qt::OtherFocusReason);
    update();
}

void KeyCaptureView::showHotkey() {
    setAccessibleDescription(shownText() == prompt_ ? QString() : shownText());
    update();
}

// During a capture, Tab and the keys of menus and shortcuts are recorded like any other key.
bool KeyCaptureView::event(QEvent* event) {
    if (*capture_.isCapturing) {
        if (event->type() == QEvent::ShortcutOverride) {
            event->accept();
            return true;
        }
        if (event->type() == QEvent::KeyPress) {
            keyPressEvent(static_cast<QKeyEvent*>(event));
            return true;
        }
    }
    return QWidget::event(event);
}

void KeyCaptureView::keyPressEvent(QKeyEvent* event) {
    if (!*capture_.isCapturing)
        return QWidget::keyPressEvent(event);
    event->accept();
    const KeyPress press = translate_(*event);
    if (isModifier(event->key()))
        capture_.modifiersChanged(heldAfter(*event, press.modifiers));
    else if (!event->isAutoRepeat())
        capture_.keyDown(press);
}

void KeyCaptureView::keyReleaseEvent(QKeyEvent* event) {
    if (!*capture_.isCapturing)
        return QWidget::keyReleaseEvent(event);
    event->accept();
    if (isModifier(event->key()) && !event->isAutoRepeat())
        capture_.modifiersChanged(heldAfter(*event, translate_(*event).modifiers));
}

void KeyCaptureView::focusOutEvent(QFocusEvent* event) {
    capture_.focusLost();
    QWidget::focusOutEvent(event);
}

void KeyCaptureView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool capturing = *capture_.isCapturing;
    const bool marked = capturing || hasFocus();
    painter.setPen(QPen(marked ? theme::accent : theme::edge, marked ? 2 : 1));
    painter.setBrush(capturing ? theme::selection : theme::raised);
    painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), theme::corner, theme::corner);
    const bool recorded = shownText() != prompt_;
    painter.setPen(recorded ? theme::text : theme::secondaryText);
    const QRect inside = rect().adjusted(theme::spacing, 0, -theme::spacing, 0);
    painter.drawText(inside, Qt::AlignCenter,
                     fontMetrics().elidedText(shownText(), Qt::ElideRight, inside.width()));
}

}  // namespace tembrix
