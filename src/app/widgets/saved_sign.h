#pragma once

#include <QLabel>

#include "base/signal.h"

namespace tembrix {

class StorageHealth;
class Texts;

// A quiet sign that says whether all marks are on the disk.
class SavedSign final : public QLabel {
    Q_OBJECT
  public:
    SavedSign(StorageHealth& health, const Texts& texts, QWidget* parent);

  private:
    void showStatus();

    StorageHealth& health_;
    const Texts& texts_;
    Subscription subscription_;
};

}  // namespace tembrix
