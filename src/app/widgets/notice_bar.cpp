#include "app/widgets/notice_bar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPushButton>
#include <QToolButton>

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"

namespace tembrix {

NoticeBar::NoticeBar(const Texts& texts, std::string_view name, std::string_view dismissKey,
                     QWidget* parent)
    : QFrame(parent), row_(new QHBoxLayout(this)), message_(new ElidedLabel({}, this)) {
    setObjectName(qtext(name));
    setProperty("look", "card");
    row_->setContentsMargins(theme::margin, theme::unit, theme::unit, theme::unit);
    row_->setSpacing(theme::spacing);
    message_->setObjectName(QStringLiteral("noticeMessage"));
    row_->addWidget(message_, 1);
    auto* dismiss = makeIconButton(texts, dismissKey, QStringLiteral("window-close"), this);
    connect(dismiss, &QToolButton::clicked, this, [this] {
        hide();
        Q_EMIT hiddenByUser();
    });
    row_->addWidget(dismiss);
    hide();
}

void NoticeBar::addButton(QPushButton* button) {
    row_->insertWidget(row_->count() - 1, button);
}

void NoticeBar::say(const QString& message) {
    message_->setFullText(message);
    setAccessibleName(message);
    show();
    QAccessibleEvent said(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&said);
}

}  // namespace tembrix
