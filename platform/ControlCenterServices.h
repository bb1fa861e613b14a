#pragma once
// ControlCenterServices, as the device answers it from files:
//   - the user's enabled modules, in order: the array "module-identifiers" of
//     "/var/jb/var/mobile/Library/ControlCenter/ModuleConfiguration.plist";
//   - a module's bundle: a folder "<Name>.bundle" with an "Info.plist" (and optionally a localised
//     "en.lproj/InfoPlist.strings" property list) under "/var/jb/System/Library/ControlCenter/Bundles/"
//     for the system's modules or "/var/jb/Library/ControlCenter/Bundles/" for others, found by its
//     "CFBundleIdentifier". A module without a bundle has no bundle URL.
// The classes are looked up by name and resolve only once the framework bundle was loaded.

#include "platform/PlistValue.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// NSBundle: a bundle folder's info dictionaries.
class NSBundle {
public:
    /// The bundle at a logical folder path, or nullptr when there is no folder.
    static std::shared_ptr<NSBundle> bundleWithPath(const std::string& path);
    /// Loads the bundle's executable (dlopen of the file named after the bundle); false on failure.
    bool load();

    const std::string& bundlePath() const { return _path; }
    /// "Info.plist" (empty when missing or unreadable).
    const PlistDictionary& infoDictionary() const { return _info; }
    /// "en.lproj/InfoPlist.strings" (empty when missing).
    const PlistDictionary& localizedInfoDictionary() const { return _localized; }

private:
    std::string _path;
    PlistDictionary _info;
    PlistDictionary _localized;
};

struct CCSModuleMetadata {
    std::string moduleIdentifier;
    /// The bundle folder's logical path; empty when the module has no bundle.
    std::string moduleBundleURL;
};

namespace ControlCenterServices {

/// "/System/Library/PrivateFrameworks/ControlCenterServices.framework".
extern const char* const kFrameworkPath;
inline constexpr const char* kModuleConfigurationPath = "/var/jb/var/mobile/Library/ControlCenter/ModuleConfiguration.plist";
inline constexpr const char* kSystemBundlesPath = "/var/jb/System/Library/ControlCenter/Bundles/";
inline constexpr const char* kBundlesPath = "/var/jb/Library/ControlCenter/Bundles/";

}  // namespace ControlCenterServices

/// CCSModuleSettingsProvider (sharedProvider).
class CCSModuleSettingsProvider {
public:
    static std::shared_ptr<CCSModuleSettingsProvider> sharedProvider();
    std::vector<std::string> orderedUserEnabledModuleIdentifiers() const;
};

/// CCSModuleRepository (repositoryWithDefaults).
class CCSModuleRepository {
public:
    static std::shared_ptr<CCSModuleRepository> repositoryWithDefaults();
    CCSModuleMetadata moduleMetadataForModuleIdentifier(const std::string& identifier) const;
};
