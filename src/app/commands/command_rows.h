#pragma once

#include <QString>
#include <string_view>

#include "ports/texts.h"

class QTreeWidget;

namespace tembrix {

// A list of lines with a text at the left and a key at the right, for the command search and the
// list of keys.
QTreeWidget* makeCommandRows(const Texts& texts, std::string_view nameKey);

}  // namespace tembrix
