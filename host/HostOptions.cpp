#include "host/HostOptions.h"

#include <cstdlib>
#include <system_error>

namespace fs = std::filesystem;

fs::path resolveRoot(const std::optional<std::string>& rootOption)
{
    if (rootOption)
        return fs::absolute(*rootOption);
    if (const char* root = std::getenv("NIMBRA_ROOT"); root && *root)
        return fs::absolute(root);
    const char* home = std::getenv("HOME");
    return fs::path(home && *home ? home : "/tmp") / ".local/share/nimbra-prefs/jb";
}

fs::path resolveResources(const char* argv0)
{
    if (const char* resources = std::getenv("NIMBRA_RESOURCES"); resources && *resources)
        return fs::absolute(resources);
    std::error_code ec;
    fs::path program = fs::read_symlink("/proc/self/exe", ec);
    if (ec && argv0)
        program = fs::absolute(argv0);
    fs::path installed = program.parent_path() / "../share/nimbra-prefs/resources";
    if (fs::is_directory(installed, ec))
        return installed.lexically_normal();
    return NIMBRA_RESOURCES_DIR;
}
