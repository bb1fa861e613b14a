#pragma once
// Property lists made to hurt a parser: the files of the robustness tests and the fuzz seeds.

#include <cstddef>
#include <string>

namespace hostile {

/// An XML plist whose string holds a NUL byte.
std::string xmlWithNul();
/// A binary plist whose string holds a NUL byte.
std::string binaryWithNul();
/// A binary plist of `depth` arrays, each holding the next.
std::string binaryNested(std::size_t depth);
/// An XML plist of `depth` nested arrays.
std::string xmlNested(std::size_t depth);
/// A binary plist of `levels` arrays, each referring `fan` times to the one below (fan^levels
/// strings once expanded) in about fan * levels bytes.
std::string binarySharedReferences(std::size_t fan, std::size_t levels);
/// A binary plist whose top array holds itself.
std::string binaryCycle();

}  // namespace hostile
