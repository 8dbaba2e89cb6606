#pragma once

#include <string>

#include "base/result.h"

#include "ports/texts.h"

namespace tembrix {

// The error that a run reports to its window.
Error plainError(std::string text);

// Describes for the user why an export could not be created.
std::string describeMaking(const Error& error, const Texts& texts);

// Describes for the user why an export could not be saved at the chosen place.
std::string describeSaving(const Error& error, const Texts& texts);

}  // namespace tembrix
