#pragma once

#include <QWidget>

#include "base/signal.h"

class QLabel;

namespace tembrix {

class DataSyncManager;
class Texts;

// Says above the list of videos what went wrong with the user's data and what was done about it.
// Hidden while there is nothing to say.
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
