#include "adapters/plist/plist_property_list.h"

#include <cstdlib>
#include <memory>
#include <plist/plist.h>

#include "base/result.h"

namespace tembrix {

namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;

}  // namespace

Result<Bytes> PlistPropertyList::encode(const std::map<std::string, Bytes>& values) const {
    const Node root(plist_new_dict(), &plist_free);
    for (const auto& [key, data] : values) {
        plist_dict_set_item(
            root.get(), key.c_str(),
            plist_new_data(reinterpret_cast<const char*>(data.data()), data.size()));
    }
    char* file = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root.get(), &file, &length);
    if (!file)
        return Error{"propertyList", 1, "the property list could not be written"};
    Bytes bytes(file, file + length);
    std::free(file);
    return bytes;
}

Result<std::map<std::string, Bytes>> PlistPropertyList::decode(BytesView file) const {
    if (!asText(file).starts_with("bplist"))
        return Error{"propertyList", 2, "not a binary property list"};
    plist_t parsed = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(file.data()),
                   static_cast<std::uint32_t>(file.size()), &parsed);
    const Node root(parsed, &plist_free);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return Error{"propertyList", 2, "the property list is damaged"};

    std::map<std::string, Bytes> values;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(root.get(), &iterator);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(root.get(), iterator, &key, &value);
        if (!key)
            break;
        if (plist_get_node_type(value) == PLIST_DATA) {
            char* data = nullptr;
            std::uint64_t length = 0;
            plist_get_data_val(value, &data, &length);
            values[key] = Bytes(data, data + length);
            std::free(data);
        }
        std::free(key);
    }
    std::free(iterator);
    return values;
}

}  // namespace tembrix
