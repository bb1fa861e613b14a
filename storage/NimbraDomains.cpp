#include "storage/NimbraDomains.h"

namespace NimbraDomains {

namespace {

constexpr std::string_view kNimbraDirectory = "/var/jb/var/mobile/Library/Nimbra/";

}  // namespace

std::string base()
{
    return "com.veltram.nimbraprefs";
}

std::string identifier(std::string_view suffix)
{
    return base() + std::string(suffix);
}

std::string colors(std::string_view suffix)
{
    return identifier(suffix) + ".colors";
}

std::string blackListedApps(std::string_view suffix)
{
    return identifier(suffix) + ".blackListedApps";
}

std::string gestureApps(std::string_view suffix)
{
    return identifier(suffix) + ".gestureApps";
}

std::string hiddenApps(std::string_view suffix)
{
    return identifier(suffix) + ".hiddenApps";
}

std::string systemApps()
{
    return identifier(".system.apps");
}

std::string preferencesDirectory()
{
    return "/var/jb/var/mobile/Library/Preferences/";
}

std::string file(std::string_view identifier)
{
    return preferencesDirectory() + std::string(identifier) + ".plist";
}

std::string groupFile(std::string_view suffix, std::string_view store)
{
    return file(identifier(suffix) + std::string(store));
}

const std::vector<std::string>& maintenanceSuffixes()
{
    static const std::vector<std::string> suffixes{
        "",          ".appswitcher", ".controlcenter", ".homescreen", ".lockscreen",  ".notifications", ".statusbar",
        ".battery",  ".time",        ".widgets",       ".misc",       ".batteryline", ".bluetoothbatteryinfo",
        ".cpuinfo",  ".glimra",      ".tovin",         ".networkspeed", ".raminfo",   ".system",        ".keyboard",
        ".appstore", ".cameraphotos", ".clock",        ".messages",   ".music",       ".phone",         ".safari",
        ".settings",
    };
    return suffixes;
}

std::string pickedImage(std::string_view fileName)
{
    return std::string(kNimbraDirectory) + std::string(fileName) + ".png";
}

bool isPlainFileName(std::string_view fileName)
{
    return !fileName.empty() && fileName != "." && fileName != ".." && fileName.find('/') == std::string_view::npos &&
           fileName.find('\0') == std::string_view::npos;
}

std::string appIconColorsCache()
{
    return std::string(kNimbraDirectory) + "AppIconColors.cache";
}

std::string springboardAlbumColorsCache()
{
    return std::string(kNimbraDirectory) + "SpringboardAlbumColors.cache";
}

std::string musicAppAlbumColorsCache()
{
    return std::string(kNimbraDirectory) + "MusicAppAlbumColors.cache";
}

}  // namespace NimbraDomains
