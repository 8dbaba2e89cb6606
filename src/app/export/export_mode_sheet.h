#pragma once

#include <functional>

#include "ports/texts.h"

#include "app/widgets/sheet.h"
#include "core/export/cut_records.h"

class QCheckBox;

namespace tembrix {

// Asks whether to export one film or an archive of clips, with or without the drawings.
class ExportModeSelectionSheet final : public Sheet {
    Q_OBJECT
  public:
    // `drawingsOffered`: whether the switch is enabled.
    ExportModeSelectionSheet(QWidget* parent, const Texts& texts, bool exportWithDrawings,
                             bool drawingsOffered);

    bool exportWithDrawings() const;

    std::function<void(ExportMode)> onSelect;  // called once the sheet has closed

  private:
    QWidget* makeChoice(ExportMode mode, std::string_view key, std::string_view hintKey,
                        const char* icon);

    QCheckBox* drawings_;
};

}  // namespace tembrix
