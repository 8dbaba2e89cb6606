#pragma once

namespace tembrix {

// Provides which windows have the keyboard focus. Implemented by the window orchestration.
class KeyWindows {
  public:
    virtual ~KeyWindows() = default;
    virtual bool isControlOrLibraryKey() const = 0;
    virtual bool isProjectWindowActive() const = 0;
    virtual bool isViewerActive() const = 0;  // a viewer exists and is active
};

}  // namespace tembrix
