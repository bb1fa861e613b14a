#include "host/JsonValue.h"

#include "platform/ObjCRuntime.h"
#include "platform/PropertyListSerialization.h"

#include <algorithm>
#include <cmath>
#include <ctime>

nlohmann::ordered_json toJson(const PlistValue& value)
{
    using Kind = PlistValue::Kind;
    switch (value.kind()) {
    case Kind::Nil: return nullptr;
    case Kind::Boolean: return value.boolValue();
    case Kind::Integer:
        if (value.isLargeUnsigned())
            return value.unsignedBits();
        return value.integerValue();
    case Kind::Real: return value.doubleValue();
    case Kind::String: return value.stringValue();
    case Kind::Data: return PropertyListSerialization::base64(value.dataValue()->bytes);
    case Kind::Date: return PropertyListSerialization::iso8601(value.dateValue()->secondsSinceReferenceDate);
    case Kind::UID: return nlohmann::ordered_json{{"CF$UID", value.uidValue()->value}};
    case Kind::Array: {
        auto array = nlohmann::ordered_json::array();
        for (auto& item : value.arrayValue())
            array.push_back(toJson(item));
        return array;
    }
    case Kind::Dictionary: {
        auto object = nlohmann::ordered_json::object();
        for (auto& [key, item] : value.dictionaryValue())
            object[key] = toJson(item);
        return object;
    }
    case Kind::Class: return value.classValue()->name;
    }
    return nullptr;
}

std::size_t jsonNestingDepth(std::string_view text)
{
    std::size_t depth = 0, deepest = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}
