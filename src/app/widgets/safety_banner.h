#pragma once

#include <QLabel>

#include "base/signal.h"

namespace tembrix {

class StorageHealth;
class Texts;

// A line across a window that says that marks are not safe on the disk, and why. Hidden while they
// are.
class SafetyBanner final : public QLabel {
    Q_OBJECT
  public:
    SafetyBanner(StorageHealth& health, const Texts& texts, QWidget* parent);

  private:
    void showStatus();

    StorageHealth& health_;
    const Texts& texts_;
    Subscription subscription_;
};

}  // namespace tembrix
