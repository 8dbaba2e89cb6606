#pragma once

namespace tembrix {

// The player functions that the keyboard uses.
class KeyTransport {
  public:
    virtual ~KeyTransport() = default;
    virtual void togglePlayPause() = 0;
    virtual double transportTime() const = 0;
    virtual void seek(double seconds) = 0;
};

}  // namespace tembrix
