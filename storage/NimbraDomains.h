#pragma once
// The catalogue of the bundle's preference domains and files. Every identifier is the base
// "com.veltram.nimbraprefs" followed by a suffix; every domain lives in the file
// "/var/jb/var/mobile/Library/Preferences/<identifier>.plist". Pages and resets name domains and
// files through this catalogue only.

#include <string>
#include <string_view>

namespace NimbraDomains {

/// "com.veltram.nimbraprefs", the base domain (master switch, selected colour picker).
std::string base();
/// The identifier of a suffix: "com.veltram.nimbraprefs" + suffix (".batteryline" -> ...batteryline).
std::string identifier(std::string_view suffix);
/// A group's colour domain: identifier(suffix) + ".colors".
std::string colors(std::string_view suffix);
/// The Preferences directory, "/var/jb/var/mobile/Library/Preferences/".
std::string preferencesDirectory();
/// The file of a domain identifier: preferencesDirectory() + identifier + ".plist".
std::string file(std::string_view identifier);

}  // namespace NimbraDomains
