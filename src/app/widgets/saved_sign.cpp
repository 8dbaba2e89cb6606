#include "app/widgets/saved_sign.h"

#include <algorithm>
#include <string>
#include <utility>

#include "ports/texts.h"
#include "ports/user_defaults.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"
#include "core/storage/storage_health.h"

namespace tembrix {

namespace {

// The text and the sentence that explains it.
std::pair<const char*, const char*> textKeys(const DefaultsStatus& status) {
    if (!status.allStored)
        return {"marksNotSaved", "marksNotSavedHelp"};
    if (!status.synced)
        return {"marksSaving", "marksSavingHelp"};
    return {"marksSaved", "marksSavedHelp"};
}

}  // namespace

SavedSign::SavedSign(StorageHealth& health, const Texts& texts, QWidget* parent)
    : QLabel(parent), health_(health), texts_(texts) {
    setObjectName(QStringLiteral("savedSign"));
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setContentsMargins(theme::margin, 0, theme::margin, 0);
    subscription_ = health_.observe([this](const DefaultsStatus&) { showStatus(); });
    followLanguage(this, texts, [this] {
        // The sign keeps its place while its text changes.
        int widest = 0;
        for (const bool stored : {true, false})
            for (const bool synced : {true, false}) {
                const DefaultsStatus status{stored, {}, StorageFault::other, synced};
                const char* key = textKeys(status).first;
                widest = std::max(widest, fontMetrics().horizontalAdvance(qtext(texts_.text(key))));
            }
        setMinimumWidth(widest + 2 * theme::margin);
        showStatus();
    });
}

void SavedSign::showStatus() {
    const auto [text, help] = textKeys(health_.status());
    setText(qtext(texts_.text(text)));
    setToolTip(qtext(texts_.text(help)));
    setAccessibleName(toolTip());
    setLook(this, health_.status().allStored ? LabelLook::secondary : LabelLook::warning);
}

}  // namespace tembrix
