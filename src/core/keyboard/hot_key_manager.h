#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/published.h"

#include "ports/scheduler.h"

#include "core/background/lifetime.h"
#include "core/keyboard/hot_key_codes.h"
#include "core/keyboard/hotkey_registry.h"
#include "core/keyboard/key_transport.h"
#include "core/keyboard/key_windows.h"
#include "core/keyboard/text_focus.h"
#include "core/notifications/event_bus.h"
#include "core/records/annotation_records.h"
#include "core/settings/settings.h"

namespace tembrix {

// Handles the key presses of an open project: tags, labels, playback and the drawing editor. It
// receives each press before any view does and ignores it while something else uses the keyboard.
// It belongs to the project, including all state that blocks or redirects keys. Main thread only.
class HotKeyManager final : public HotkeyRegistry {
  public:
    struct LabelHotkey {
        std::string labelId;
        std::string tagId;
        bool operator==(const LabelHotkey&) const = default;
    };

    HotKeyManager(EventBus& events, Scheduler& scheduler, FocusStateManager& focus,
                  KeyTransport& transport, const Settings& settings);

    void setKeyWindows(const KeyWindows* windows) { windows_ = windows; }

    void registerHotkeys(const std::vector<Tag>& tags, const TagCollection& collection) override;
    void clearHotkeys();

    // While labels are chosen, keys choose labels instead of tags. The label hot keys of the given
    // tag have priority over those of other tags, which may use the same keys. Of several choices
    // at once the one that began last has the keys.
    using LabelChoice = int;
    LabelChoice beginLabelChoice(std::optional<std::string> tagId);
    void endLabelChoice(LabelChoice choice);
    bool hasLabelKeys(LabelChoice choice) const;

    // Handles a press. Returns true if it was handled, false if views should receive it.
    bool handleKeyDown(const KeyPress& press);
    // Whether the press would be handled now; for code that is asked before the press is delivered.
    bool takes(const KeyPress& press) { return meaningOf(press) != nullptr; }

    Published<bool, HotKeyManager> isEnabled{true};
    Published<std::optional<std::string>, HotKeyManager> hotKeySelectedLabelId;
    Published<bool, HotKeyManager> isLabelHotkeyMode{false};
    Published<bool, HotKeyManager> blockedSheetActive{false};

    const std::map<std::string, Tag>& registeredHotkeys() const { return registeredHotkeys_; }
    const std::map<std::string, LabelHotkey>& registeredLabelHotkeys() const {
        return registeredLabelHotkeys_;
    }
    const TagCollection& activeCollection() const { return activeCollection_; }

  private:
    // The action for a press in the current state; empty if views should receive the press.
    using Meaning = std::function<void()>;
    Meaning meaningOf(const KeyPress& press);
    Meaning editorMeaningOf(const KeyPress& press);
    Meaning lookUp(const KeyPress& press);
    std::optional<LabelHotkey> labelFor(const KeyPress& press) const;

    EventBus& events_;
    Scheduler& scheduler_;
    FocusStateManager& focus_;
    KeyTransport& transport_;
    const Settings& settings_;
    const KeyWindows* windows_ = nullptr;
    bool isEditorModeActive_ = false;
    bool isEditingTextBox_ = false;
    TagCollection activeCollection_;
    std::map<std::string, Tag> registeredHotkeys_;
    std::map<std::string, LabelHotkey> registeredLabelHotkeys_;
    std::map<std::string, std::map<std::string, std::string>> labelHotkeysOfTags_;  // key to label
    std::map<LabelChoice, std::optional<std::string>> labelChoices_;  // to the tag of each
    LabelChoice lastLabelChoice_ = 0;
    std::vector<Subscription> subscriptions_;
    Lifetime lifetime_;
};

// Whether a hot key is in use, compared as text, for warnings in an editor.
bool isHotkeyUsed(const std::vector<Tag>& tags, const std::optional<std::string>& hotkey,
                  const std::optional<std::string>& exceptTagId = {});

}  // namespace tembrix
