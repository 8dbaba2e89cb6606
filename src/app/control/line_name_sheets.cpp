#include "app/control/line_name_sheets.h"

#include <QPushButton>
#include <QVBoxLayout>

#include "base/utf8_text.h"

#include "app/theme/theme.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_focus.h"
#include "core/notifications/event_bus.h"
#include "core/notifications/events.h"

namespace tembrix {

LineNameSheet::LineNameSheet(QWidget* parent, const ControlServices& services,
                             std::string_view titleKey, std::string_view acceptKey,
                             const std::string& lineName,
                             std::function<void(const std::string&)> done)
    : Sheet(parent, services.texts, titleKey),
      events_(services.events),
      field_(new FocusAwareLineEdit(services.focus, this)) {
    field_->setText(qtext(lineName));
    field_->selectAll();
    field_->setMinimumWidth(theme::nameFieldWidth);
    content()->addWidget(labeled(services.texts, "timelineName", field_));
    addCancelButton("cancelButtonTitle");
    QPushButton* accept = addAcceptButton(acceptKey);
    const auto name = [this] { return trimmed(utf8Text(field_->text())); };
    const auto check = [accept, name] { accept->setEnabled(!name().empty()); };
    connect(field_, &QLineEdit::textChanged, this, check);
    check();
    connect(this, &QDialog::accepted, this, [name, done = std::move(done)] { done(name()); });
    field_->setFocus();
}

LineNameSheet::~LineNameSheet() {
    events_.post(events::SheetDismissed{});
}

AddLineSheet::AddLineSheet(QWidget* parent, const ControlServices& services,
                           std::function<void(const std::string&)> onAdd)
    : LineNameSheet(parent, services, "addTimelineTitle", "addTimelineButton", "",
                    std::move(onAdd)) {
    services.events.post(events::AddLineSheetAppeared{});
}

EditTimelineNameSheet::EditTimelineNameSheet(QWidget* parent, const ControlServices& services,
                                             const std::string& lineName,
                                             std::function<void(const std::string&)> onSave)
    : LineNameSheet(parent, services, "editTimelineNameTitle", "saveButtonTitle", lineName,
                    std::move(onSave)) {
    services.events.post(events::EditTimelineSheetAppeared{});
}

}  // namespace tembrix
