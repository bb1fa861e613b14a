#pragma once
// Property-list values as JSON, as the hosts report them: data as base64, dates as ISO 8601 UTC,
// class objects by name.

#include "platform/PlistValue.h"

#include <nlohmann/json.hpp>

nlohmann::ordered_json toJson(const PlistValue& value);
