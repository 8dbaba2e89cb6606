#pragma once

#include <string>

#include "base/result.h"

#include "ports/texts.h"

namespace tembrix {

// The error that a run reports to its window.
Error plainError(std::string text);

// Why a product could not be made, for the user: in the program's language where the user can do
// something about it.
std::string describeMaking(const Error& error, const Texts& texts);

// Why a finished product could not be written to the place that the user chose.
std::string describeSaving(const Error& error, const Texts& texts);

}  // namespace tembrix
