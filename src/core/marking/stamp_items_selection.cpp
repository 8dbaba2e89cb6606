#include "core/marking/stamp_items_selection.h"

#include <algorithm>
#include <utility>

#include "core/notifications/events.h"

namespace tembrix {

namespace {

template <class Record>
const Record* byId(const std::vector<Record>& records, const std::string& id) {
    const auto found = std::find_if(records.begin(), records.end(),
                                    [&](const Record& record) { return record.id == id; });
    return found == records.end() ? nullptr : &*found;
}

// The groups to choose from. The groups of a tag of the active collection must be in that
// collection; groups of other tags are also looked up in the merged lists.
std::vector<LabelGroupData> offeredGroups(const std::optional<Tag>& tag,
                                          const TagLibraryManager& library) {
    std::vector<LabelGroupData> groups;
    if (!tag) {
        groups = library.active->labelGroups;
    } else {
        const bool isActive = byId(library.active->tags, tag->id) != nullptr;
        for (const std::string& id : tag->lablesGroup) {
            const LabelGroupData* group = byId(library.active->labelGroups, id);
            if (!group && !isActive)
                group = byId(library.merged->labelGroups, id);
            if (group && !byId(groups, id))
                groups.push_back(*group);
        }
    }
    std::stable_sort(groups.begin(), groups.end(),
                     [](const auto& a, const auto& b) { return a.name < b.name; });
    return groups;
}

StampItemsSelection::Section labelSection(const LabelGroupData& group,
                                          const std::optional<Tag>& tag,
                                          const TagLibraryManager& library) {
    StampItemsSelection::Section section{group.name, {}};
    // The labels of a group are in its collection, or they are gone.
    const bool isActive = byId(library.active->labelGroups, group.id) != nullptr;
    for (const std::string& id : group.lables) {
        const Label* label = byId(library.active->labels, id);
        if (!label && !isActive)
            label = library.labelById(id);
        if (!label)
            continue;
        StampItemsSelection::Item item{id, label->name, std::nullopt};
        if (tag && tag->labelHotkeys)
            if (const auto key = tag->labelHotkeys->find(id); key != tag->labelHotkeys->end())
                item.hotkey = key->second;
        section.items.push_back(std::move(item));
    }
    return section;
}

}  // namespace

StampItemsSelection::StampItemsSelection(Arguments arguments, const TagLibraryManager& tagLibrary,
                                         HotKeyManager& hotkeys, EventBus& events)
    : arguments_(std::move(arguments)), hotkeys_(hotkeys) {
    selectedItems.set({arguments_.initialIds.begin(), arguments_.initialIds.end()});
    if (arguments_.sheetType == StampEditSheetType::lables) {
        for (const auto& group : offeredGroups(arguments_.tag, tagLibrary))
            sections_.push_back(labelSection(group, arguments_.tag, tagLibrary));
    } else {
        Section section;
        for (const TimeEvent& event : arguments_.timeEvents)
            section.items.push_back({event.id, event.name, std::nullopt});
        sections_.push_back(std::move(section));
    }
    choice_ = hotkeys_.beginLabelChoice(arguments_.tag ? std::optional(arguments_.tag->id)
                                                       : std::nullopt);
    labelHotkeyPressed_ =
        events.observe<events::LabelHotkeyPressed>([this](const events::LabelHotkeyPressed& event) {
            if (hotkeys_.hasLabelKeys(choice_) &&
                arguments_.sheetType == StampEditSheetType::lables && arguments_.tag &&
                arguments_.tag->id == event.tagId)
                toggle(event.labelId);
        });
}

StampItemsSelection::~StampItemsSelection() {
    hotkeys_.endLabelChoice(choice_);
}

void StampItemsSelection::toggle(const std::string& id) {
    selectedItems.update([&](auto& selected) {
        if (selected.erase(id) == 0)
            selected.insert(id);
    });
}

std::vector<std::string> StampItemsSelection::ids() const {
    return {selectedItems->begin(), selectedItems->end()};
}

}  // namespace tembrix
