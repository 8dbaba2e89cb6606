#pragma once

#include <QObject>

#include "ports/panels.h"
#include "ports/texts.h"

class QDialog;
class QUrl;

namespace tembrix {

// Shows questions as dialogs that block one window only: the one of the object name that the
// question gives, or the active one. The file dialogs are those of the
// system unless the application attribute AA_DontUseNativeDialogs is set. The object names of the
// dialogs are "openPanel", "savePanel", "alertPanel" and "confirmPanel". A dialog that is destroyed
// with its window counts as canceled. After the panels are destroyed, no answer is delivered.
class QtPanels final : public Panels {
  public:
    explicit QtPanels(const Texts& texts) : texts_(texts) {}

    void open(const OpenPanelRequest& request,
              std::function<void(std::vector<std::filesystem::path>)> answer) override;
    void save(const SavePanelRequest& request,
              std::function<void(std::optional<std::filesystem::path>)> answer) override;
    void alert(const std::string& title, const std::string& message,
               std::function<void()> closed = {}, const std::string& window = {}) override;
    void confirm(const std::string& title, const std::string& message,
                 const std::string& confirmText, std::function<void(bool)> answer) override;
    void reveal(const std::filesystem::path& folder, std::function<void()> failed) override;
    void browse(const std::string& url, std::function<void()> failed) override;

  private:
    void openOnDesktop(const QUrl& url, std::function<void()> failed);
    // Shows the dialog and calls `ended` exactly once when it is closed.
    void present(QDialog* dialog, std::function<void()> ended);

    const Texts& texts_;
    QObject receiver_;
};

}  // namespace tembrix
