#pragma once
// Replacing a whole preference domain at once (a restored backup), beside HBPreferences: the same
// per-domain lock and atomic, durable replace that a value write goes through, so another process
// sees the old contents or the new ones, never a mixture.

#include "platform/PlistValue.h"

#include <string_view>

/// Replaces every key and value of the domain with contents in one locked, atomic write; the file
/// is written even when it was missing, and a damaged file is first moved aside as a value write
/// would. True once the new file is safely on disk; false for an identifier that names no file.
bool replaceDomainContents(std::string_view identifier, const PlistDictionary& contents);
