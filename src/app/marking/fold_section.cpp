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

FoldSection::FoldSection(const QString& objectName, const QString& title, bool compact,
                         QWidget* parent)
    : QWidget(parent),
      header_(new Header(this)),
      body_(new QWidget(this)),
      flow_(new FlowLayout(compact ? gap / 2 : gap, body_)),
      compact_(compact) {
    nameControl(this, utf8Text(objectName), title);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    header_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    header_->setIconSize({theme::iconSize - theme::unit, theme::iconSize - theme::unit});
    header_->setText(QString(title).replace('&', "&&"));
    header_->setFont(theme::font(theme::captionSize + 1, QFont::DemiBold));
    header_->setStyleSheet("QToolButton { padding: 1px 6px 1px 0; }");  // in line with the buttons
    header_->setFocusPolicy(Qt::TabFocus);
    nameControl(header_, utf8Text(objectName) + ".header", title);
    connect(header_, &QToolButton::clicked, this, &FoldSection::headerPressed);
    if (compact)
        flow_->addWidget(header_);
    else
        column->addWidget(header_, 0, Qt::AlignLeft);
    column->addWidget(body_);
    setExpanded(true);
}

void FoldSection::setExpanded(bool expanded) {
    expanded_ = expanded;
    if (compact_) {
        for (int i = 1; i < flow_->count(); ++i)  // after the header
            flow_->itemAt(i)->widget()->setVisible(expanded);
    } else {
        body_->setVisible(expanded);
    }
    tellExpanded(header_, expanded);
    header_->setIcon(theme::icon(expanded ? "arrow-down" : "arrow-right", theme::secondaryText));
}

}  // namespace tembrix
