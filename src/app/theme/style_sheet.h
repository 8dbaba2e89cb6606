#pragma once

#include <QString>

namespace tembrix::theme {

// The style sheet of all standard controls. The property "look" selects a variant: buttons "quiet",
// "accented", "destructive", "plain"; labels "secondary", "caption", "title", "warning".
QString styleSheet();

}  // namespace tembrix::theme
