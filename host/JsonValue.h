#pragma once
// Property-list values as JSON, as the hosts report them: data as base64, dates as ISO 8601 UTC,
// class objects by name.

#include "platform/PlistValue.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string_view>

nlohmann::ordered_json toJson(const PlistValue& value);

/// How deeply arrays and objects nest in JSON text (0 for a scalar, 1 for `[]` or `{}`), counted
/// without parsing and without recursion, so that text nested without bound can be refused before
/// any recursive code sees it. Brackets inside strings do not count; malformed text is measured as
/// far as it goes.
std::size_t jsonNestingDepth(std::string_view text);
