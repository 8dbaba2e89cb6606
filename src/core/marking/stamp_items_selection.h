#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/published.h"

#include "core/collections/tag_library_manager.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/notifications/event_bus.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// The logic of the selection sheet: chooses the labels or the time events of one stamp.
class StampItemsSelection {
  public:
    struct Item {
        std::string id;
        std::string name;
        std::optional<std::string> hotkey;  // of a label, if the tag assigns one
    };
    struct Section {
        std::string title;
        std::vector<Item> items;
    };
    struct Arguments {
        StampEditSheetType sheetType = StampEditSheetType::lables;
        std::string stampName;
        std::vector<std::string> initialIds;
        std::optional<Tag> tag;
        std::vector<TimeEvent> timeEvents;
    };

    // Enables the label hot key mode for the lifetime of the object. If there are several objects,
    // the label hot keys work in the newest one.
    StampItemsSelection(Arguments arguments, const TagLibraryManager& tagLibrary,
                        HotKeyManager& hotkeys, EventBus& events);
    ~StampItemsSelection();

    Published<std::set<std::string>, StampItemsSelection> selectedItems;
    const std::vector<Section>& sections() const { return sections_; }
    const std::string& stampName() const { return arguments_.stampName; }

    void toggle(const std::string& id);
    std::vector<std::string> ids() const;

  private:
    Arguments arguments_;
    HotKeyManager& hotkeys_;
    HotKeyManager::LabelChoice choice_ = 0;
    std::vector<Section> sections_;
    Subscription labelHotkeyPressed_;
};

}  // namespace tembrix
