#pragma once

#include "app/settings/settings_services.h"

class QWidget;

namespace tembrix {

// The pages of the settings window whose values are in Settings. They also show changes that are
// made elsewhere.
QWidget* makeGeneralPage(const SettingsServices& services, QWidget* parent);
QWidget* makePlaybackPage(const SettingsServices& services, QWidget* parent);
QWidget* makeFilesPage(const SettingsServices& services, QWidget* parent);

}  // namespace tembrix
