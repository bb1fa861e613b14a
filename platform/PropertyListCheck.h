#pragma once
// Checks of untrusted property-list bytes before any value is made of them. A parser recurses once
// per level of nesting, and a binary plist's shared references may be expanded into copies by
// whoever reads the values, so a small hostile file could overflow the stack or take all the
// memory; a NUL in a string is refused as other readers (libplist) abort on it. Bytes that fail a
// check are not a property list: callers treat them as they treat any malformed file.
//
// What is checked, without recursion past the bounds and in time linear in the size (plus the
// objects reached):
// - XML, before it is parsed: no NUL byte and no character reference to 0 or past U+10FFFF;
//   elements nested at most kMaxDepth + 2 deep (the plist element and a leaf element around
//   kMaxDepth containers).
// - Binary ("bplist00"), by the reader itself in the one walk that reads it
//   (PropertyListSerialization): a consistent trailer and offset table, every object and reference
//   inside the file, no NUL in any string or key, no object that contains itself, containers
//   nested at most kMaxDepth deep, and at most kMaxNodes nodes and kMaxExpandedBytes bytes of
//   strings and data once every reference is expanded into its own copy; and every object one
//   that a property list holds.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace PropertyListCheck {

/// The deepest nesting of arrays and dictionaries taken (the top level counts 1).
inline constexpr std::size_t kMaxDepth = 512;
/// The most nodes (values and dictionary keys) a binary plist may expand to.
inline constexpr std::size_t kMaxNodes = 1 << 20;
/// The most bytes of strings and data a binary plist may expand to.
inline constexpr std::size_t kMaxExpandedBytes = 64 << 20;

/// Why the bytes must not be parsed, or nothing when they may be. Bytes that are neither XML nor
/// binary pass (the parser refuses them itself); binary bytes pass only when they are read whole.
std::optional<std::string> problem(std::string_view bytes);

}  // namespace PropertyListCheck
