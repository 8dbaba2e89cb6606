#include "app/widgets/notice_bar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPushButton>
#include <QToolButton>
#include <utility>

#include "app/theme/theme.h"
#include "app/widgets/announcements.h"
#include "app/widgets/controls.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

namespace tembrix {

NoticeBar::NoticeBar(const Texts& texts, std::string_view name, std::string_view dismissKey,
                     QWidget* parent)
    : QFrame(parent), row_(new QHBoxLayout(this)), label_(new ElidedLabel({}, this)) {
    setObjectName(qtext(name));
    setProperty("look", "card");
    row_->setContentsMargins(theme::margin, theme::unit, theme::unit, theme::unit);
    row_->setSpacing(theme::spacing);
    label_->setObjectName(QStringLiteral("noticeMessage"));
    row_->addWidget(label_, 1);
    auto* dismiss = makeIconButton(texts, dismissKey, QStringLiteral("window-close"), this);
    connect(dismiss, &QToolButton::clicked, this, [this] {
        hide();
        Q_EMIT hiddenByUser();
    });
    row_->addWidget(dismiss);
    followLanguage(this, texts, [this] { showMessage(); });
    hide();
}

void NoticeBar::addButton(QPushButton* button) {
    row_->insertWidget(row_->count() - 1, button);
    setTabOrder(button, row_->itemAt(row_->count() - 1)->widget());
}

void NoticeBar::say(std::function<QString()> message) {
    message_ = std::move(message);
    showMessage();
    show();
    if (!announcementsAreHeard())
        return;
    QAccessibleEvent said(this, QAccessible::Alert);
    announce(said);
}

void NoticeBar::showMessage() {
    if (!message_)
        return;
    const QString text = message_();
    label_->setFullText(text);
    setAccessibleName(text);
}

}  // namespace tembrix
