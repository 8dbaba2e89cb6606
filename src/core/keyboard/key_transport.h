#pragma once

namespace tembrix {

// The player as the keyboard uses it.
class KeyTransport {
  public:
    virtual ~KeyTransport() = default;
    virtual void togglePlayPause() = 0;
    virtual double transportTime() const = 0;
    virtual void seek(double seconds) = 0;
};

}  // namespace tembrix
