#pragma once
// The catalogue of the bundle's preference domains, stores and files, in one place. Every domain
// identifier is the base "com.veltram.nimbraprefs" followed by a suffix, and lives in the file
// "/var/jb/var/mobile/Library/Preferences/<identifier>.plist". Pages and resets name domains and
// files through this catalogue only.

#include <string>
#include <string_view>
#include <vector>

namespace NimbraDomains {

/// "com.veltram.nimbraprefs", the base domain ("nimbraEnabled", "selectedColorPicker").
std::string base();
/// A group's settings domain: base() + suffix (".batteryline" -> "com.veltram.nimbraprefs.batteryline").
std::string identifier(std::string_view suffix);
/// A group's colour domain: identifier(suffix) + ".colors".
std::string colors(std::string_view suffix);
/// A group's app-list stores: identifier(suffix) + ".blackListedApps" / ".gestureApps" / ".hiddenApps".
std::string blackListedApps(std::string_view suffix);
std::string gestureApps(std::string_view suffix);
std::string hiddenApps(std::string_view suffix);
/// The system group's app lists, "com.veltram.nimbraprefs.system.apps".
std::string systemApps();

/// The Preferences directory, "/var/jb/var/mobile/Library/Preferences/".
std::string preferencesDirectory();
/// The file of a domain or store identifier: preferencesDirectory() + identifier + ".plist".
std::string file(std::string_view identifier);
/// The file of a group's store: file(identifier(suffix) + store), e.g. store ".doubleTapApp".
std::string groupFile(std::string_view suffix, std::string_view store = {});

/// The domain suffixes the maintenance page clears, in its order: the base domain ("") and the
/// 27 settings domains. No colour domain is among them.
const std::vector<std::string>& maintenanceSuffixes();

/// A picked image: "/var/jb/var/mobile/Library/Nimbra/<fileName>.png".
std::string pickedImage(std::string_view fileName);
/// Whether fileName can name a picked image (a plain name: not empty, no "/", not "." or "..").
bool isPlainFileName(std::string_view fileName);

/// The colour caches the customisation code writes, deleted by the maintenance page.
std::string appIconColorsCache();
std::string springboardAlbumColorsCache();
std::string musicAppAlbumColorsCache();

/// The Darwin notifications the bundle posts.
inline constexpr const char* kTovinTestNotification = "com.veltram.nimbraprefs.tovin/TestNotification";
inline constexpr const char* kNotificationsTestNotifications = "com.veltram.nimbraprefs.notifications/TestNotifications";
inline constexpr const char* kNotificationsTestBanner = "com.veltram.nimbraprefs.notifications/TestBanner";

}  // namespace NimbraDomains
