#include "adapters/qt/message_panel.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tembrix {
namespace {

constexpr int edge = 20, gap = 12, textWidth = 340;  // pixels

QLabel* makeText(const char* name, const char* look, const std::string& text, QWidget* parent) {
    auto* label = new QLabel(QString::fromStdString(text), parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(textWidth);
    label->setProperty("look", look);
    return label;
}

}  // namespace

MessagePanel::MessagePanel(QWidget* parent, const char* name, const std::string& title,
                           const std::string& message)
    : QDialog(parent) {
    setObjectName(name);
    setProperty("look", "message");
    const auto& first = title.empty() ? message : title;
    setWindowTitle(QString::fromStdString(first));
    setAccessibleName(windowTitle());
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(edge, edge, edge, edge);
    column->setSpacing(gap);
    column->setSizeConstraint(QLayout::SetFixedSize);
    if (!title.empty())
        column->addWidget(makeText("panelTitle", "title", title, this));
    if (!message.empty()) {
        column->addWidget(makeText("panelMessage", "body", message, this));
        setAccessibleDescription(QString::fromStdString(message));
    }
    buttons_ = new QHBoxLayout;
    buttons_->addStretch(1);
    column->addLayout(buttons_);
}

QPushButton* MessagePanel::addButton(const char* name, const std::string& text, const char* look) {
    // An ampersand in the text must not mark a shortcut.
    const auto shown = QString::fromStdString(text);
    auto* button = new QPushButton(QString(shown).replace('&', "&&"), this);
    button->setObjectName(name);
    button->setAccessibleName(shown);
    button->setProperty("look", look);
    buttons_->addWidget(button);
    return button;
}

}  // namespace tembrix
