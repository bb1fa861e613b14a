#include "platform/PropertyListSerialization.h"

#include "platform/PropertyListCheck.h"

#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>

namespace {

struct NodeDeleter {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

// Seconds between 1970-01-01 and 2001-01-01, for values that are dates.
PlistValue fromNode(plist_t node, int depth)
{
    if (!node || depth > static_cast<int>(PropertyListCheck::kMaxDepth))
        return {};
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t b = 0;
        plist_get_bool_val(node, &b);
        return PlistValue(b != 0);
    }
    case PLIST_UINT: {
        uint64_t u = 0;
        plist_get_uint_val(node, &u);
        return PlistValue(static_cast<long long>(static_cast<int64_t>(u)));
    }
    case PLIST_REAL: {
        double d = 0;
        plist_get_real_val(node, &d);
        return PlistValue(d);
    }
    case PLIST_STRING: {
        char* s = nullptr;
        plist_get_string_val(node, &s);
        PlistValue value(std::string(s ? s : ""));
        std::free(s);
        return value;
    }
    case PLIST_DATA: {
        char* bytes = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &bytes, &length);
        PlistData data;
        if (bytes)
            data.bytes.assign(reinterpret_cast<uint8_t*>(bytes), reinterpret_cast<uint8_t*>(bytes) + length);
        std::free(bytes);
        return PlistValue(std::move(data));
    }
    case PLIST_DATE: {
        int32_t sec = 0, usec = 0;
        plist_get_date_val(node, &sec, &usec);
        return PlistValue(PlistDate{sec + usec / 1e6});
    }
    case PLIST_ARRAY: {
        PlistArray array;
        uint32_t count = plist_array_get_size(node);
        array.reserve(count);
        for (uint32_t i = 0; i < count; ++i)
            array.push_back(fromNode(plist_array_get_item(node, i), depth + 1));
        return PlistValue(std::move(array));
    }
    case PLIST_DICT: {
        PlistDictionary dictionary;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        for (;;) {
            char* key = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, it, &key, &item);
            if (!item) {
                std::free(key);
                break;
            }
            if (key)
                dictionary[key] = fromNode(item, depth + 1);
            std::free(key);
        }
        std::free(it);
        return PlistValue(std::move(dictionary));
    }
    case PLIST_UID: {
        uint64_t u = 0;
        plist_get_uid_val(node, &u);
        return PlistValue(static_cast<long long>(u));
    }
    default:
        return {};
    }
}

plist_t toNode(const PlistValue& value)
{
    switch (value.kind()) {
    case PlistValue::Kind::Boolean: return plist_new_bool(value.boolValue());
    case PlistValue::Kind::Integer: return plist_new_uint(static_cast<uint64_t>(value.integerValue()));
    case PlistValue::Kind::Real: return plist_new_real(value.doubleValue());
    case PlistValue::Kind::String: return plist_new_string(value.stringValue().c_str());
    case PlistValue::Kind::Data: {
        const auto& bytes = value.dataValue()->bytes;
        return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    case PlistValue::Kind::Date: {
        double seconds = value.dateValue()->secondsSinceReferenceDate;
        auto whole = static_cast<int32_t>(seconds);
        return plist_new_date(whole, static_cast<int32_t>((seconds - whole) * 1e6));
    }
    case PlistValue::Kind::Array: {
        plist_t array = plist_new_array();
        for (const PlistValue& item : value.arrayValue())
            if (plist_t node = toNode(item))
                plist_array_append_item(array, node);
        return array;
    }
    case PlistValue::Kind::Dictionary: {
        plist_t dictionary = plist_new_dict();
        for (const auto& [key, item] : value.dictionaryValue())
            if (plist_t node = toNode(item))
                plist_dict_set_item(dictionary, key.c_str(), node);
        return dictionary;
    }
    default:
        return nullptr;
    }
}

}  // namespace

namespace PropertyListSerialization {

std::optional<PlistValue> propertyListWithData(std::string_view bytes)
{
    if (bytes.empty() || bytes.size() > std::numeric_limits<uint32_t>::max())
        return std::nullopt;
    // Hostile bytes would abort libplist, overflow its stack or expand without bound.
    if (PropertyListCheck::problem(bytes))
        return std::nullopt;
    plist_t raw = nullptr;
    plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &raw);
    Node node(raw);
    if (!node)
        return std::nullopt;
    return fromNode(raw, 0);
}

std::string dataWithPropertyList(const PlistValue& value, Format format)
{
    Node node(value.isNil() ? plist_new_dict() : toNode(value));
    if (!node)
        node.reset(plist_new_dict());
    char* bytes = nullptr;
    uint32_t length = 0;
    if (format == Format::Binary)
        plist_to_bin(static_cast<plist_t>(node.get()), &bytes, &length);
    else
        plist_to_xml(static_cast<plist_t>(node.get()), &bytes, &length);
    std::string out(bytes ? bytes : "", bytes ? length : 0);
    std::free(bytes);
    return out;
}

}  // namespace PropertyListSerialization
