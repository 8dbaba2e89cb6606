#pragma once

#include <filesystem>
#include <string_view>

namespace tembrix {

// The text key of the reason why the text cannot be the address of a server; null if it can. An
// empty text is no address and no fault.
const char* addressFault(std::string_view address);

// The text key of the reason why nothing can be saved in the folder; null if it can.
const char* folderFault(const std::filesystem::path& folder);

}  // namespace tembrix
