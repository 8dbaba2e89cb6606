#pragma once

namespace tembrix {

// Silences the sound, graphics and window libraries unless their messages are requested. Must be
// called before the QApplication is created.
void silenceLibraries();

}  // namespace tembrix
