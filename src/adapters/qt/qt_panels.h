#pragma once

#include <QObject>

#include "ports/panels.h"
#include "ports/texts.h"

class QDialog;

namespace tembrix {

// Questions as dialogs over the active window, which alone they hold back. The file dialogs are the
// system's own unless the application attribute AA_DontUseNativeDialogs is set. The dialogs' object
// names are "openPanel", "savePanel", "alertPanel" and "confirmPanel"; a dialog that goes with its
// window counts as canceled. No answer comes after the panels are gone.
class QtPanels final : public Panels {
  public:
    explicit QtPanels(const Texts& texts) : texts_(texts) {}

    void open(const OpenPanelRequest& request,
              std::function<void(std::vector<std::filesystem::path>)> answer) override;
    void save(const SavePanelRequest& request,
              std::function<void(std::optional<std::filesystem::path>)> answer) override;
    void alert(const std::string& title, const std::string& message,
               std::function<void()> closed = {}) override;
    void confirm(const std::string& title, const std::string& message,
                 const std::string& confirmText, std::function<void(bool)> answer) override;
    void reveal(const std::filesystem::path& folder) override;
    void browse(const std::string& url) override;

  private:
    // Shows the dialog and calls back, exactly once, when it is off the screen.
    void present(QDialog* dialog, std::function<void()> ended);

    const Texts& texts_;
    QObject receiver_;
};

}  // namespace tembrix
