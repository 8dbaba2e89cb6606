#include "app/widgets/safety_banner.h"

#include "ports/texts.h"
#include "ports/user_defaults.h"

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"
#include "core/storage/storage_health.h"

namespace tembrix {

namespace {

const char* textKey(StorageFault fault) {
    switch (fault) {
        case StorageFault::diskFull:
            return "marksNotSafeDiskFull";
        case StorageFault::readOnly:
            return "marksNotSafeReadOnly";
        case StorageFault::unreachable:
            return "marksNotSafeUnreachable";
        case StorageFault::other:
            break;
    }
    return "marksNotSafeOther";
}

}  // namespace

SafetyBanner::SafetyBanner(StorageHealth& health, const Texts& texts, QWidget* parent)
    : QLabel(parent), health_(health), texts_(texts) {
    setObjectName(QStringLiteral("safetyBanner"));
    tellRole(this, QAccessible::AlertMessage);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::spacing);
    setLook(this, LabelLook::warning);
    statusChanged_ = health_.observe([this](const DefaultsStatus&) { showStatus(); });
    documentsChanged_ = health_.observeDocuments([this](bool) { showStatus(); });
    followLanguage(this, texts, [this] { showStatus(); });
}

void SafetyBanner::showStatus() {
    const DefaultsStatus& status = health_.status();
    QString warning;
    if (!status.allStored)
        warning = qtext(texts_.text(textKey(status.fault)));
    else if (!health_.documentsWritten())
        warning = qtext(texts_.text("marksNotInDocuments"));
    setText(warning);
    // Unlike the text, the name is announced each time it is set.
    if (warning != accessibleName())
        setAccessibleName(warning);
    setVisible(!warning.isEmpty());
}

}  // namespace tembrix
