#pragma once

#include <QWidget>

#include "base/signal.h"

class QLabel;

namespace tembrix {

class DataSyncManager;
class Texts;

// Informs the user, above the list of videos, about damage to the stored data and its repair.
// Hidden if there was none.
class SafetyBar final : public QWidget {
    Q_OBJECT

  public:
    SafetyBar(const Texts& texts, DataSyncManager& dataSync, QWidget* parent = nullptr);

  private:
    void showNotices();

    const Texts& texts_;
    DataSyncManager& dataSync_;
    QLabel* label_;
    Subscription notices_;
};

}  // namespace tembrix
