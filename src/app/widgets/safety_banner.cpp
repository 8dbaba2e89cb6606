#include "app/widgets/safety_banner.h"

#include "ports/texts.h"
#include "ports/user_defaults.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
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
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setContentsMargins(theme::margin, theme::spacing, theme::margin, theme::spacing);
    setLook(this, LabelLook::warning);
    subscription_ = health_.observe([this](const DefaultsStatus&) { showStatus(); });
    showStatus();
}

void SafetyBanner::showStatus() {
    const DefaultsStatus& status = health_.status();
    setText(status.allStored ? QString() : qtext(texts_.text(textKey(status.fault))));
    setAccessibleName(text());
    setVisible(!status.allStored);
}

}  // namespace tembrix
