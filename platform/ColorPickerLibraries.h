#pragma once
// The colour-picker libraries a device may have. Rows rewritten for libsparkcolourpicker keep their
// store in the "libsparkcolourpicker" option set ("defaults", "key", "fallback", "PostNotification")
// and the library's cell reads and writes it itself.

#include "platform/PSSpecifier.h"

namespace SparkColourPicker {

/// Whether a row is a libsparkcolourpicker row (has the option set).
bool isSparkRow(const PSSpecifier& row);
/// The stored colour of a spark row, or its fallback.
PlistValue storedValue(const PSSpecifier& row);
/// What the library's cell does when the user picks a colour: stores it in the option set's domain
/// under its key, then posts its notification. False when the row has no store.
bool store(const PSSpecifier& row, const PlistValue& value);

}  // namespace SparkColourPicker
