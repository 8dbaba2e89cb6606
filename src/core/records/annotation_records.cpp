#include "core/records/annotation_records.h"

namespace tembrix {

TagFormData tagFormData(const Tag& tag) {
    TagFormData form;
    form.name = tag.name;
    form.description = tag.description;
    form.color = parseHexColor(tag.color);
    form.hexColor = tag.color;
    form.defaultTimeBefore = tag.defaultTimeBefore;
    form.defaultTimeAfter = tag.defaultTimeAfter;
    form.selectedLabelGroups = tag.lablesGroup;
    form.hotkey = tag.hotkey;
    if (tag.labelHotkeys)
        form.labelHotkeys = *tag.labelHotkeys;
    form.mapEnabled = tag.mapEnabled.value_or(false);
    form.isInterval = tag.isInterval.value_or(false);
    return form;
}

}  // namespace tembrix
