#pragma once

#include <QWidget>
#include <functional>

#include "app/settings/settings_services.h"

class QListWidget;
class QStackedWidget;

namespace tembrix {

// The content of the settings window: a list of pages and the chosen page. Each change takes effect
// and is stored at once. Escape closes the window.
class SettingsView final : public QWidget {
    Q_OBJECT
  public:
    explicit SettingsView(const SettingsServices& services, QWidget* parent = nullptr);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    void addPage(const char* titleKey, QWidget* page, std::function<void()> reset);

    const SettingsServices services_;
    QListWidget* names_;
    QStackedWidget* pages_;
};

}  // namespace tembrix
