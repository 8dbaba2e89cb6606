#pragma once

#include <filesystem>
#include <string>

#include "base/signal.h"

#include "ports/panels.h"
#include "ports/texts.h"

#include "app/export/lower_bar.h"
#include "core/export/unsaved_products.h"

namespace tembrix {

// Says at the lower edge of a window that a film or an archive was saved, and offers to play it
// and to show it in its folder.
class SavedProductBar final : public LowerBar {
    Q_OBJECT
  public:
    // `window` is the name of the window whose products it shows.
    SavedProductBar(const UnsavedProducts& products, Panels& panels, const Texts& texts,
                    std::string window, QWidget* host);

  private:
    void showSaved(const SavedProduct& product);
    void open(bool folder);
    void sayName(std::string_view key);

    Panels& panels_;
    const Texts& texts_;
    const std::string window_;
    QPushButton* play_;
    std::filesystem::path file_;
    Subscription saved_;
};

}  // namespace tembrix
