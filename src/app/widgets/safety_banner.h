#pragma once

#include <QLabel>

#include "base/signal.h"

namespace tembrix {

class StorageHealth;
class Texts;

// A banner that warns that marks are not saved on the disk, or not in the documents, and says why.
// Hidden while they are saved.
class SafetyBanner final : public QLabel {
    Q_OBJECT
  public:
    SafetyBanner(StorageHealth& health, const Texts& texts, QWidget* parent);

  private:
    void showStatus();

    StorageHealth& health_;
    const Texts& texts_;
    Subscription statusChanged_;
    Subscription documentsChanged_;
};

}  // namespace tembrix
