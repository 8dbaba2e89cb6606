#include "app/library/safety_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QString>
#include <QStringList>
#include <QToolButton>

#include "ports/texts.h"

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"
#include "core/safety/data_sync_manager.h"

namespace tembrix {

namespace {

const char* textKey(SafetyNotice notice) {
    switch (notice) {
        case SafetyNotice::videoListRepaired:
            return "safetyVideoListRepaired";
        case SafetyNotice::videoListLost:
            return "safetyVideoListLost";
        case SafetyNotice::videoListDoubtful:
            return "safetyVideoListDoubtful";
        case SafetyNotice::videoListUnreadable:
            return "safetyVideoListUnreadable";
        case SafetyNotice::newerCopiesUsed:
            return "safetyNewerCopiesUsed";
        case SafetyNotice::restored:
            return "safetyRestored";
        case SafetyNotice::restoredNewer:
            return "safetyRestoredNewer";
        case SafetyNotice::restoreFinished:
            return "safetyRestoreFinished";
        case SafetyNotice::restoreIncomplete:
            return "safetyRestoreIncomplete";
        case SafetyNotice::backupFailed:
            return "safetyBackupFailed";
        case SafetyNotice::damagedKept:
            return "safetyDamagedKept";
        case SafetyNotice::databaseReplaced:
            return "safetyDatabaseReplaced";
        case SafetyNotice::unsavedUnreadable:
            return "safetyUnsavedUnreadable";
        case SafetyNotice::laterChangesUsed:
            return "safetyLaterChangesUsed";
        case SafetyNotice::timelineFromBackup:
            return "safetyTimelineFromBackup";
        case SafetyNotice::timelineUnreadable:
            return "safetyTimelineUnreadable";
    }
    return "";
}

}  // namespace

SafetyBar::SafetyBar(const Texts& texts, DataSyncManager& dataSync, QWidget* parent)
    : QWidget(parent), texts_(texts), dataSync_(dataSync), label_(new QLabel) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::spacing);
    row->setSpacing(theme::spacing);
    label_->setObjectName(QStringLiteral("safetyNotices"));
    label_->setWordWrap(true);
    tellRole(label_, QAccessible::AlertMessage);
    setLook(label_, LabelLook::warning);
    row->addWidget(label_, 1);
    auto* dismiss = makeIconButton(texts_, "safetyDismiss", QStringLiteral("window-close"));
    connect(dismiss, &QToolButton::clicked, this, [this] { dataSync_.dismissNotices(); });
    row->addWidget(dismiss, 0, Qt::AlignTop);
    notices_ = dataSync_.observeNotices([this] { showNotices(); });
    followLanguage(this, texts, [this] { showNotices(); });
}

void SafetyBar::showNotices() {
    QStringList lines;
    for (const auto notice : dataSync_.notices())
        lines += qtext(texts_.text(textKey(notice)));
    label_->setText(lines.join('\n'));
    label_->setAccessibleName(label_->text());
    setVisible(!lines.isEmpty());
}

}  // namespace tembrix
