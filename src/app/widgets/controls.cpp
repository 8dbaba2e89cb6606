#include "app/widgets/controls.h"

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/theme/theme.h"
#include "app/widgets/qt_text.h"

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
    auto* button = new QPushButton(qtext(texts.text(key)), parent);
    button->setAutoDefault(false);
    nameControl(button, texts, key);
    setLook(button, look);
    return button;
}

QToolButton* makeIconButton(const Texts& texts, std::string_view key, const QString& icon,
                            QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setIcon(theme::icon(icon));
    button->setIconSize({theme::iconSize, theme::iconSize});
    button->setToolTip(qtext(texts.text(key)));
    button->setFocusPolicy(Qt::StrongFocus);
    nameControl(button, texts, key);
    return button;
}

QCheckBox* makeCheckBox(const Texts& texts, std::string_view key, QWidget* parent) {
    auto* box = new QCheckBox(qtext(texts.text(key)), parent);
    nameControl(box, texts, key);
    return box;
}

QLabel* makeLabel(const Texts& texts, std::string_view key, LabelLook look, QWidget* parent) {
    auto* label = new QLabel(qtext(texts.text(key)), parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    nameControl(label, texts, key);
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

void nameControl(QWidget* control, const Texts& texts, std::string_view key) {
    nameControl(control, key, qtext(texts.text(key)));
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
    auto* caption = new QLabel(qtext(texts.text(key)), box);
    caption->setTextFormat(Qt::PlainText);
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
    if (orientation == Qt::Vertical)
        line->setFixedWidth(1);
    else
        line->setFixedHeight(1);
    return line;
}

}  // namespace tembrix
