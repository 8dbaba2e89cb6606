#include "app/widgets/controls.h"

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/focus_rest.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

namespace tembrix {
namespace {

void setLookProperty(QWidget* widget, const char* look) {
    if (widget->property("look") == QVariant(QString(look)))
        return;
    widget->setProperty("look", look);
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

}  // namespace

QPushButton* makeButton(const Texts& texts, std::string_view key, ButtonLook look,
                        QWidget* parent) {
    auto* button = new QPushButton(parent);
    showText(button, texts, key, &QAbstractButton::text, &QAbstractButton::setText);
    button->setAutoDefault(false);
    nameControl(button, texts, key);
    setLook(button, look);
    return button;
}

QToolButton* makeIconButton(const Texts& texts, std::string_view key, const QString& icon,
                            QWidget* parent) {
    auto* button = new QToolButton(parent);
    showIcon(button, texts, key, icon);
    return button;
}

void showIcon(QToolButton* button, const Texts& texts, std::string_view key, const QString& icon) {
    button->setIcon(theme::icon(icon));
    button->setIconSize({theme::iconSize, theme::iconSize});
    showText(button, texts, key, &QWidget::toolTip, &QWidget::setToolTip);
    button->setFocusPolicy(Qt::TabFocus);  // a click leaves the focus where it is
    nameControl(button, texts, key);
}

QCheckBox* makeCheckBox(const Texts& texts, std::string_view key, QWidget* parent) {
    auto* box = new QCheckBox(parent);
    showText(box, texts, key, &QAbstractButton::text, &QAbstractButton::setText);
    nameControl(box, texts, key);
    return box;
}

QLabel* makeLabel(const Texts& texts, std::string_view key, LabelLook look, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    showText(label, texts, key, &QLabel::text, &QLabel::setText);
    label->setWordWrap(true);
    label->setObjectName(qtext(key));  // screen readers read the text, which may change
    setLook(label, look);
    return label;
}

void setLook(QPushButton* button, ButtonLook look) {
    switch (look) {
        case ButtonLook::quiet:
            return setLookProperty(button, "quiet");
        case ButtonLook::accented:
            return setLookProperty(button, "accented");
        case ButtonLook::destructive:
            return setLookProperty(button, "destructive");
        case ButtonLook::plain:
            return setLookProperty(button, "plain");
    }
}

void setLook(QLabel* label, LabelLook look) {
    switch (look) {
        case LabelLook::body:
            return setLookProperty(label, "body");
        case LabelLook::secondary:
            return setLookProperty(label, "secondary");
        case LabelLook::caption:
            return setLookProperty(label, "caption");
        case LabelLook::title:
            return setLookProperty(label, "title");
        case LabelLook::warning:
            return setLookProperty(label, "warning");
    }
}

void leaveFocus(QWidget* control) {
    QWidget* focus = control->window()->focusWidget();
    if (!focus || (focus != control && !control->isAncestorOf(focus)))
        return;
    if (QWidget* content = focusRest(control))
        content->setFocus();
    else
        focus->clearFocus();
}

void setUsable(QWidget* control, bool usable) {
    if (!usable)
        leaveFocus(control);
    control->setEnabled(usable);
}

void nameControl(QWidget* control, const Texts& texts, std::string_view key) {
    control->setObjectName(qtext(key));
    showText(control, texts, key, &QWidget::accessibleName, &QWidget::setAccessibleName);
}

void nameControl(QWidget* control, std::string_view objectName, const QString& accessibleName) {
    control->setObjectName(qtext(objectName));
    control->setAccessibleName(accessibleName);
}

QWidget* labeled(const Texts& texts, std::string_view key, QWidget* control) {
    auto* box = new QWidget;
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::unit);
    auto* caption = new QLabel(box);
    caption->setTextFormat(Qt::PlainText);
    showText(caption, texts, key, &QLabel::text, &QLabel::setText);
    caption->setBuddy(control);
    setLook(caption, LabelLook::caption);
    column->addWidget(caption);
    column->addWidget(control);
    nameControl(control, texts, key);
    return box;
}

QFrame* makeSeparator(Qt::Orientation orientation, QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setProperty("look", "separator");
    tellRole(line, QAccessible::Separator);
    if (orientation == Qt::Vertical)
        line->setFixedWidth(1);
    else
        line->setFixedHeight(1);
    return line;
}

}  // namespace tembrix
