#include "app/marking/fold_section.h"

#include <QKeyEvent>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/flow_layout.h"
#include "app/widgets/qt_text.h"

namespace tembrix {
namespace {

constexpr int gap = theme::unit;
constexpr int compactArrow = 10;

// The space key plays and pauses in this window, so Return folds the section.
class Header final : public QToolButton {
  public:
    using QToolButton::QToolButton;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            click();
        else
            QToolButton::keyPressEvent(event);
    }
};

}  // namespace

FoldSection::FoldSection(const QString& objectName, const QString& title, FlowLayout* shared,
                         QWidget* parent)
    : QWidget(parent),
      body_(shared ? shared->parentWidget() : new QWidget(this)),
      flow_(shared ? shared : new FlowLayout(gap, body_)),
      compact_(shared != nullptr) {
    header_ = new Header(compact_ ? body_ : this);
    nameControl(this, utf8Text(objectName), title);
    header_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    header_->setIconSize({theme::iconSize - theme::unit, theme::iconSize - theme::unit});
    header_->setText(QString(title).replace('&', "&&"));
    header_->setFont(theme::font(theme::captionSize + 1, QFont::DemiBold));
    header_->setStyleSheet("QToolButton { padding: 1px 6px 1px 0; }");  // in line with the buttons
    header_->setFocusPolicy(Qt::TabFocus);
    nameControl(header_, utf8Text(objectName) + ".header", title);
    connect(header_, &QToolButton::clicked, this, &FoldSection::headerPressed);
    if (compact_) {
        header_->setFont(theme::font(theme::captionSize, QFont::DemiBold));
        header_->setIconSize({compactArrow, compactArrow});
        header_->setStyleSheet("QToolButton { padding: 0 2px 0 0; }");
        flow_->addWidget(header_);
        hide();
    } else {
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(2);
        column->addWidget(header_, 0, Qt::AlignLeft);
        column->addWidget(body_);
    }
    setExpanded(true);
}

void FoldSection::add(QWidget* button) {
    flow_->addWidget(button);
    buttons_.push_back(button);
}

void FoldSection::setExpanded(bool expanded) {
    expanded_ = expanded;
    if (compact_) {
        for (QWidget* button : buttons_)
            button->setVisible(expanded);
    } else {
        body_->setVisible(expanded);
    }
    tellExpanded(header_, expanded);
    header_->setIcon(theme::icon(expanded ? "arrow-down" : "arrow-right", theme::secondaryText));
}

}  // namespace tembrix
