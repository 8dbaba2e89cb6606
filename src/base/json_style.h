#pragma once

namespace tembrix {

enum class JsonStyle { compact, pretty };

}  // namespace tembrix
