#include "app/marking/marking_sheets.h"

#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>
#include <memory>

#include "app/widgets/controls.h"
#include "app/widgets/sheet.h"
#include "app/widgets/stamp_items_sheet.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/marking/marking_flow.h"
#include "core/marking/stamp_items_selection.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

MarkingSheets::MarkingSheets(const TagPanelServices& services, MarkingFlow& flow, QWidget* panel)
    : QObject(panel), services_(services), flow_(flow), panel_(panel) {
    showLabelSheet_ = flow.showLabelSheet.observe([this](bool show) {
        if (!show)
            dismiss();
        else if (!sheet_)
            open();
    });
}

MarkingSheets::~MarkingSheets() {
    dismiss();
}

void MarkingSheets::open() {
    switch (flow_.sheetContent()) {
        case MarkingFlow::SheetContent::noTimeline:
            sheet_ = makeMessage("tagLibraryNoTimeline");
            sheet_->addCancelButton("closeButtonTitle");
            sheet_->addAcceptButton("fullControlButtonAddTimeline");
            sheet_->setHotkeys(Sheet::Hotkeys::ofWindow);
            connect(sheet_, &QDialog::rejected, this, [this] {
                sheet_.clear();
                flow_.cancelSheet();
            });
            connect(sheet_, &QDialog::accepted, this, &MarkingSheets::addTimeline);
            break;
        case MarkingFlow::SheetContent::addingTag:
            sheet_ = makeMessage("tagLibraryAddingTag");
            QTimer::singleShot(0, sheet_, [this] { flow_.completeSheet({}); });
            break;
        case MarkingFlow::SheetContent::selection:
            sheet_ = makeSelection();
            break;
    }
    sheet_->keepOverWindow();
    sheet_->present();
}

Sheet* MarkingSheets::makeMessage(const char* key) {
    auto* sheet = new Sheet(panel_->window(), services_.texts, "tagLibrary");
    sheet->content()->addWidget(makeLabel(services_.texts, key, LabelLook::body, sheet));
    return sheet;
}

Sheet* MarkingSheets::makeSelection() {
    const Tag tag = **flow_.selectedTag;
    auto* sheet = new StampItemsSheet(
        panel_->window(), services_.texts, StampEditSheetType::lables, "collectionsButtonAdd",
        std::make_unique<StampItemsSelection>(
            StampItemsSelection::Arguments{.sheetType = StampEditSheetType::lables,
                                           .stampName = tag.name,
                                           .initialIds = {},
                                           .tag = tag,
                                           .timeEvents = {}},
            services_.tagLibrary, services_.hotkeys, services_.events));
    connect(sheet, &QDialog::accepted, this, [this, sheet] {
        sheet_.clear();
        flow_.completeSheet(sheet->ids());
    });
    connect(sheet, &QDialog::rejected, this, [this] {
        sheet_.clear();
        flow_.cancelSheet();
    });
    return sheet;
}

void MarkingSheets::addTimeline() {
    sheet_.clear();
    flow_.awaitTimeline();
    // The message is still closing.
    QTimer::singleShot(0, this, [this] {
        if (!services_.commands.run(Command::addLine))
            flow_.cancelSheet();
    });
}

void MarkingSheets::dismiss() {
    if (!sheet_)
        return;
    sheet_->disconnect(this);
    sheet_->close();
    sheet_.clear();
}

}  // namespace tembrix
