#pragma once
// Where a host finds its installation root and the bundle's resources.

#include <filesystem>
#include <optional>
#include <string>

/// --root DIR, else $NIMBRA_ROOT, else ~/.local/share/nimbra-prefs/jb.
std::filesystem::path resolveRoot(const std::optional<std::string>& rootOption);
/// $NIMBRA_RESOURCES, else "../share/nimbra-prefs/resources" beside the program, else the source tree's.
std::filesystem::path resolveResources(const char* argv0);
