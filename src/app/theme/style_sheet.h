#pragma once

#include <QString>

namespace tembrix::theme {

// The style sheet of all standard controls. A control chooses among looks by the property "look":
// buttons "quiet", "accented", "destructive", "plain"; labels "secondary", "caption", "title",
// "warning".
QString styleSheet();

}  // namespace tembrix::theme
