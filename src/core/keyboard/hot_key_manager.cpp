#include "core/keyboard/hot_key_manager.h"

#include <algorithm>
#include <utility>

#include "core/notifications/events.h"

namespace tembrix {

namespace {

// Finds the value by the place of the key. Keys outside the tables are also found by their recorded
// form. No value is registered for a press that has neither.
template <class Value>
std::optional<Value> find(const std::map<std::string, Value>& registered, const KeyPress& press) {
    auto found = registered.find(keyString(press));
    if (found == registered.end() && !press.characters.empty())
        found = registered.find(canonicalHotkey(capturedForm(press)));
    return found == registered.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

HotKeyManager::HotKeyManager(EventBus& events, Scheduler& scheduler, FocusStateManager& focus,
                             KeyTransport& transport, const Settings& settings)
    : events_(events),
      scheduler_(scheduler),
      focus_(focus),
      transport_(transport),
      settings_(settings) {
    const auto on = [&]<class Event>(std::function<void(const Event&)> handler) {
        subscriptions_.push_back(events_.observe<Event>(std::move(handler)));
    };
    on(std::function([this](const events::CollectionEditorOpened&) { isEnabled.set(false); }));
    on(std::function([this](const events::CollectionEditorClosed&) { isEnabled.set(true); }));
    on(std::function([this](const events::EditorModeChanged& event) {
        isEditorModeActive_ = event.active.value_or(isEditorModeActive_);
    }));
    on(std::function([this](const events::TextBoxEditingChanged& event) {
        isEditingTextBox_ = event.active.value_or(isEditingTextBox_);
    }));
    on(std::function(
        [this](const events::AddLineSheetAppeared&) { blockedSheetActive.set(true); }));
    on(std::function(
        [this](const events::EditTimelineSheetAppeared&) { blockedSheetActive.set(true); }));
    on(std::function([this](const events::SheetDismissed&) { blockedSheetActive.set(false); }));
}

void HotKeyManager::registerHotkeys(const std::vector<Tag>& tags, const TagCollection& collection) {
    clearHotkeys();
    activeCollection_ = collection;
    for (const auto& tag : tags) {
        if (const auto text = canonicalHotkey(tag.hotkey.value_or("")); !text.empty())
            registeredHotkeys_.insert_or_assign(text, tag);
        if (!tag.labelHotkeys)
            continue;
        for (const auto& [labelId, hotkey] : *tag.labelHotkeys) {
            const auto text = canonicalHotkey(hotkey);
            if (text.empty())
                continue;
            registeredLabelHotkeys_.insert_or_assign(text, LabelHotkey{labelId, tag.id});
            labelHotkeysOfTags_[tag.id].insert_or_assign(text, labelId);
        }
    }
}

void HotKeyManager::clearHotkeys() {
    registeredHotkeys_.clear();
    registeredLabelHotkeys_.clear();
    labelHotkeysOfTags_.clear();
}

HotKeyManager::LabelChoice HotKeyManager::beginLabelChoice(std::optional<std::string> tagId) {
    labelChoices_.emplace(++lastLabelChoice_, std::move(tagId));
    isLabelHotkeyMode.set(true);
    return lastLabelChoice_;
}

void HotKeyManager::endLabelChoice(LabelChoice choice) {
    labelChoices_.erase(choice);
    isLabelHotkeyMode.set(!labelChoices_.empty());
    hotKeySelectedLabelId.set(std::nullopt);
}

bool HotKeyManager::hasLabelKeys(LabelChoice choice) const {
    return !labelChoices_.empty() && labelChoices_.rbegin()->first == choice;
}

bool HotKeyManager::handleKeyDown(const KeyPress& press) {
    const Meaning meaning = meaningOf(press);
    if (meaning)
        meaning();
    return meaning != nullptr;
}

HotKeyManager::Meaning HotKeyManager::meaningOf(const KeyPress& press) {
    if (isEditorModeActive_ && !isEditingTextBox_)
        if (auto meaning = editorMeaningOf(press))
            return meaning;
    if (press.code == key::space && windows_ && windows_->isControlOrLibraryKey() &&
        windows_->isProjectWindowActive() && *isEnabled && !*blockedSheetActive)
        return [this] { transport_.togglePlayPause(); };
    if (!*isEnabled || *blockedSheetActive || isEditorModeActive_ || *focus_.isAnyTextFieldFocused)
        return nullptr;
    return lookUp(press);
}

HotKeyManager::Meaning HotKeyManager::editorMeaningOf(const KeyPress& press) {
    if (press.code == key::returnKey)
        return [this] { events_.post(events::EditorEnterKeyPressed{}); };
    if (!press.modifiers.command)
        return nullptr;
    switch (press.code) {
        case key::c:
            return [this] { events_.post(events::EditorCopyKeyPressed{}); };
        case key::v:
            return [this] { events_.post(events::EditorPasteKeyPressed{}); };
        case key::z:
            return [this] { events_.post(events::EditorUndoKeyPressed{}); };
        default:
            return nullptr;
    }
}

HotKeyManager::Meaning HotKeyManager::lookUp(const KeyPress& press) {
    if (!windows_ || (!windows_->isProjectWindowActive() && !windows_->isViewerActive()))
        return nullptr;
    const bool viewerMode = windows_->isViewerActive();
    if (press.code == key::space) {
        if (isEditingTextBox_)
            return nullptr;
        if (viewerMode)
            return [this] { events_.post(events::ToggleViewerPlayer{}); };
        return [this] { transport_.togglePlayPause(); };
    }
    if (press.modifiers.shift && press.code == key::right) {
        if (viewerMode)
            return [this] { events_.post(events::SeekViewerPlayerForward{}); };
        return
            [this] { transport_.seek(transport_.transportTime() + settings_.values->keySeekStep); };
    }
    if (press.modifiers.shift && press.code == key::left) {
        if (viewerMode)
            return [this] { events_.post(events::SeekViewerPlayerBackward{}); };
        return
            [this] { transport_.seek(transport_.transportTime() - settings_.values->keySeekStep); };
    }
    if (*isLabelHotkeyMode) {
        const auto label = labelFor(press);
        if (!label)
            return nullptr;
        return [this, label = *label] {
            hotKeySelectedLabelId.set(label.labelId);
            events_.post(events::LabelHotkeyPressed{label.labelId, label.tagId});
        };
    }
    const auto found = find(registeredHotkeys_, press);
    if (!found)
        return nullptr;
    // Posted two turns of the main queue later, after all effects of the press, and only if the
    // project is still open then.
    return [this, tag = *found] {
        scheduler_.onMain(lifetime_.guard([this, tag] {
            scheduler_.onMain(
                lifetime_.guard([this, tag] { events_.post(events::ShowLabelSheet{tag}); }));
        }));
    };
}

std::optional<HotKeyManager::LabelHotkey> HotKeyManager::labelFor(const KeyPress& press) const {
    const auto tag = labelChoices_.empty() ? std::nullopt : labelChoices_.rbegin()->second;
    if (tag) {
        const auto own = labelHotkeysOfTags_.find(*tag);
        if (own != labelHotkeysOfTags_.end())
            if (const auto label = find(own->second, press))
                return LabelHotkey{*label, *tag};
    }
    return find(registeredLabelHotkeys_, press);
}

bool isHotkeyUsed(const std::vector<Tag>& tags, const std::optional<std::string>& hotkey,
                  const std::optional<std::string>& exceptTagId) {
    return hotkey && !hotkey->empty() && std::any_of(tags.begin(), tags.end(), [&](const Tag& tag) {
               return tag.hotkey == hotkey && tag.id != exceptTagId;
           });
}

}  // namespace tembrix
