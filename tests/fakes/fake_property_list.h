#pragma once

#include "ports/property_list.h"

namespace tembrix {

// A property list as lines "key length" followed by the data.
class FakePropertyList final : public PropertyList {
  public:
    Result<Bytes> encode(const std::map<std::string, Bytes>& values) const override {
        Bytes file = toBytes("fake\n");
        for (const auto& [key, data] : values) {
            const Bytes head = toBytes(key + " " + std::to_string(data.size()) + "\n");
            file.insert(file.end(), head.begin(), head.end());
            file.insert(file.end(), data.begin(), data.end());
        }
        return file;
    }
    Result<std::map<std::string, Bytes>> decode(BytesView file) const override {
        std::string_view rest = asText(file);
        if (!rest.starts_with("fake\n"))
            return Error{"propertyList", 2, "damaged"};
        rest.remove_prefix(5);
        std::map<std::string, Bytes> values;
        while (!rest.empty()) {
            const auto blank = rest.find(' ');
            const auto end = rest.find('\n');
            if (blank == std::string_view::npos || end == std::string_view::npos)
                return Error{"propertyList", 2, "damaged"};
            const auto length = std::stoul(std::string(rest.substr(blank + 1, end - blank - 1)));
            values[std::string(rest.substr(0, blank))] = toBytes(rest.substr(end + 1, length));
            rest.remove_prefix(end + 1 + length);
        }
        return values;
    }
};

}  // namespace tembrix
