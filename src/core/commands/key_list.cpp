#include "core/commands/key_list.h"

#include "base/utf8_text.h"

#include "core/commands/command_keys.h"
#include "core/commands/fixed_keys.h"

namespace tembrix {

namespace {

std::string allKeys(const CommandKeys& keys, const CommandRow& row) {
    std::vector<std::string> captions;
    if (row.fixedKey)
        captions.push_back(commandKeyCaption(row.fixedKey));
    for (const auto& key : keys.keys(row.id))
        captions.push_back(commandKeyCaption(key));
    return joined(captions, ", ");
}

bool isListed(CommandScope scope, std::optional<CommandScope> window) {
    return !window || scope == CommandScope::everywhere || scope == window;
}

}  // namespace

std::vector<KeySection> keySections(const Commands& commands, const Texts& texts,
                                    std::optional<CommandScope> window) {
    std::vector<KeySection> sections;
    const char* menu = nullptr;
    for (const CommandRow& row : commandTable()) {
        const auto shown = allKeys(commands.keys(), row);
        if (shown.empty() || !isListed(row.scope, window))
            continue;
        if (const char* title = menuTextKey(row.menu); title != menu) {
            menu = title;
            sections.push_back({texts.text(title), {}});
        }
        sections.back().lines.push_back({shown, commands.name(row.id, texts)});
    }
    KeySection controls{texts.text("keysOfControls"), {}};
    for (const FixedKey& key : fixedKeys())
        if (isListed(key.scope, window))
            controls.lines.push_back({key.caption, texts.text(key.textKey)});
    sections.push_back(std::move(controls));
    return sections;
}

}  // namespace tembrix
