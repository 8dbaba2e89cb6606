#include "core/commands/keys_page.h"

#include "base/utf8_text.h"

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

bool isListed(CommandScope scope, CommandScope window) {
    return window == CommandScope::everywhere || scope == CommandScope::everywhere ||
           scope == window;
}

std::string escaped(const std::string& text) {
    std::string html;
    for (const char c : text) {
        if (c == '&')
            html += "&amp;";
        else if (c == '<')
            html += "&lt;";
        else
            html += c;
    }
    return html;
}

}  // namespace

std::vector<KeySection> keySections(const CommandKeys& keys, const Texts& texts,
                                    CommandScope window) {
    std::vector<KeySection> sections;
    const char* menu = nullptr;
    for (const CommandRow& row : commandTable()) {
        const auto shown = allKeys(keys, row);
        if (shown.empty() || !isListed(row.scope, window))
            continue;
        if (const char* title = menuTextKey(row.menu); title != menu) {
            menu = title;
            sections.push_back({texts.text(title), {}});
        }
        sections.back().lines.push_back({shown, texts.text(row.textKey)});
    }
    KeySection controls{texts.text("keysOfControls"), {}};
    for (const FixedKey& key : fixedKeys())
        if (isListed(key.scope, window))
            controls.lines.push_back({key.caption, texts.text(key.textKey)});
    sections.push_back(std::move(controls));
    return sections;
}

std::string keysPage(const CommandKeys& keys, const Texts& texts, const std::string& language) {
    const auto title = escaped(texts.text("keysTitle"));
    std::string page = "<!DOCTYPE html>\n<html lang=\"" + language +
                       "\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + title +
                       "</title>\n<style>\nbody { max-width: 42em; margin: 2em auto; font-family: "
                       "sans-serif; background: #1c1c1e; color: #f2f2f7; }\ntd { padding: 0.2em "
                       "1.5em 0.2em 0; }\ntd:first-child { white-space: nowrap; color: #aeaeb2; "
                       "}\n</style>\n</head>\n<body>\n<h1>" +
                       title + "</h1>\n";
    for (const KeySection& section : keySections(keys, texts)) {
        page += "<h2>" + escaped(section.title) + "</h2>\n<table>\n";
        for (const KeyLine& line : section.lines)
            page +=
                "<tr><td>" + escaped(line.keys) + "</td><td>" + escaped(line.text) + "</td></tr>\n";
        page += "</table>\n";
    }
    return page + "</body>\n</html>\n";
}

}  // namespace tembrix
