#include "storage/NimbraDomains.h"

namespace NimbraDomains {

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

std::string preferencesDirectory()
{
    return "/var/jb/var/mobile/Library/Preferences/";
}

std::string file(std::string_view identifier)
{
    return preferencesDirectory() + std::string(identifier) + ".plist";
}

}  // namespace NimbraDomains
