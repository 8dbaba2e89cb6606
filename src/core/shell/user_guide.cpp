#include "core/shell/user_guide.h"

#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/files.h"
#include "base/result.h"

#include "core/commands/key_list.h"

namespace tembrix {

namespace {

constexpr std::string_view place = "<!-- keys -->";

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else
            result += c;
    }
    return result;
}

std::string keyTable(const Commands& commands, const Texts& texts) {
    std::string html = "<table>\n";
    for (const KeySection& section : keySections(commands, texts)) {
        html += "<tr><th colspan=\"2\">" + escaped(section.title) + "</th></tr>\n";
        for (const KeyLine& line : section.lines)
            html += "<tr><td><kbd>" + escaped(line.keys) + "</kbd></td><td>" + escaped(line.text) +
                    "</td></tr>\n";
    }
    return html + "</table>";
}

}  // namespace

std::filesystem::path writeGuide(const std::filesystem::path& guides,
                                 const std::filesystem::path& folder, const Locale& locale,
                                 const Commands& commands, const Texts& texts) {
    const bool russian = locale.preferredLocalization().starts_with("ru");
    const std::filesystem::path name = russian ? "ru.html" : "en.html";
    const auto source = guides / name;
    const auto content = readFile(source);
    if (!content || !makeFolder(folder))
        return source;
    std::string page(content->begin(), content->end());
    if (const auto at = page.find(place); at != std::string::npos)
        page.replace(at, place.size(), keyTable(commands, texts));
    return replaceFile(folder / name, toBytes(page)) ? folder / name : source;
}

}  // namespace tembrix
