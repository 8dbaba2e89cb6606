#pragma once

#include <functional>
#include <string>

#include "app/control/control_services.h"
#include "app/widgets/sheet.h"
#include "core/notifications/event_bus.h"

namespace tembrix {

class FocusAwareLineEdit;

// Asks for the name of a timeline. Hot keys are blocked while it is open.
class LineNameSheet : public Sheet {
    Q_OBJECT
  public:
    ~LineNameSheet() override;

  protected:
    LineNameSheet(QWidget* parent, const ControlServices& services, std::string_view titleKey,
                  std::string_view acceptKey, const std::string& lineName,
                  std::function<void(const std::string&)> done);

  private:
    EventBus& events_;
    FocusAwareLineEdit* field_;
};

class AddLineSheet final : public LineNameSheet {
    Q_OBJECT
  public:
    AddLineSheet(QWidget* parent, const ControlServices& services,
                 std::function<void(const std::string&)> onAdd);
};

class EditTimelineNameSheet final : public LineNameSheet {
    Q_OBJECT
  public:
    EditTimelineNameSheet(QWidget* parent, const ControlServices& services,
                          const std::string& lineName,
                          std::function<void(const std::string&)> onSave);
};

}  // namespace tembrix
