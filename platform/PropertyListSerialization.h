#pragma once
// NSPropertyListSerialization over libplist: property lists to and from bytes, XML or binary.

#include "platform/PlistValue.h"

#include <optional>
#include <string>
#include <string_view>

namespace PropertyListSerialization {

enum class Format { XML, Binary };

/// Parses XML or binary property-list bytes; nothing when they are not a property list or fail
/// PropertyListCheck (hostile bytes never reach libplist).
std::optional<PlistValue> propertyListWithData(std::string_view bytes);
/// Encodes a value. Class objects, having no property-list form, are left out; nil becomes an
/// empty dictionary only at the top level.
std::string dataWithPropertyList(const PlistValue& value, Format format);

}  // namespace PropertyListSerialization
