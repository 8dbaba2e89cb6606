#pragma once

#include <QWidget>
#include <optional>
#include <string>
#include <vector>

#include "base/signal.h"

#include "app/settings/settings_services.h"
#include "core/commands/command_table.h"
#include "core/commands/key_conflicts.h"
#include "core/keyboard/key_capture.h"

class QHBoxLayout;
class QLabel;
class QPushButton;

namespace tembrix {

class KeyCaptureView;

// The keys of one command: removes them, records new ones and asks when a key is in use.
class KeyEditor final : public QWidget {
    Q_OBJECT
  public:
    explicit KeyEditor(const SettingsServices& services, QWidget* parent = nullptr);
    ~KeyEditor() override;

    void show(std::optional<Command> command);
    // Waits for the key to add.
    void record();

  Q_SIGNALS:
    void recorded();  // or given up

  private:
    void showCommand();
    void showKeys();
    void captureEnded();
    void judge(const std::string& key);
    void assign(bool take);
    void forget();  // the key that was asked about

    const SettingsServices& services_;
    KeyCapture capture_;
    std::optional<Command> command_;
    std::string asked_;  // the key that is in use
    QLabel* name_;
    QLabel* help_;
    QWidget* keysBox_;
    QHBoxLayout* keys_;
    KeyCaptureView* field_;
    QPushButton* add_;
    QPushButton* reset_;
    QLabel* conflict_;
    QPushButton* take_;
    QPushButton* leave_;
    std::vector<Subscription> subscriptions_;
};

// What stands against the key, as sentences; empty if nothing does.
QString conflictText(const SettingsServices& services, const std::string& key,
                     const KeyConflicts& conflicts);

}  // namespace tembrix
