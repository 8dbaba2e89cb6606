#pragma once

namespace tembrix {

// Silences the sound, graphics and window libraries, unless their messages are wanted. Must be
// called before the QApplication is made.
void silenceLibraries();

}  // namespace tembrix
