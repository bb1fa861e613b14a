#include "platform/ControlCenterServices.h"

#include "platform/Darwin.h"
#include "platform/NSFileManager.h"
#include "platform/ObjCRuntime.h"
#include "platform/Process.h"
#include "platform/PropertyListSerialization.h"

namespace fs = std::filesystem;

namespace ControlCenterServices {

const char* const kFrameworkPath = "/System/Library/PrivateFrameworks/ControlCenterServices.framework";

}  // namespace ControlCenterServices

namespace {

PlistDictionary readDictionary(const std::string& path)
{
    auto bytes = NSFileManager::defaultManager().contentsAtPath(path, 1 << 20);
    auto parsed = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
    return parsed ? parsed->dictionaryValue() : PlistDictionary{};
}

// The framework's classes, visible once its binary is loaded.
const bool registered [[maybe_unused]] = [] {
    std::string binary = std::string(ControlCenterServices::kFrameworkPath) + "/ControlCenterServices";
    ObjCRuntime::registerClass(ObjCClass{"CCSModuleRepository", "NSObject", binary, {}});
    ObjCRuntime::registerClass(ObjCClass{"CCSModuleSettingsProvider", "NSObject", binary, {}});
    return true;
}();

}  // namespace

std::shared_ptr<NSBundle> NSBundle::bundleWithPath(const std::string& path)
{
    auto host = Process::current().hostPath(path);
    std::error_code ec;
    if (!host || !fs::is_directory(*host, ec))
        return nullptr;
    auto bundle = std::make_shared<NSBundle>();
    bundle->_path = path;
    std::string folder = path.ends_with('/') ? path : path + "/";
    bundle->_info = readDictionary(folder + "Info.plist");
    bundle->_localized = readDictionary(folder + "en.lproj/InfoPlist.strings");
    return bundle;
}

bool NSBundle::load()
{
    std::string name = fs::path(_path).stem().string();
    return Darwin::dlopen(_path + "/" + name, Darwin::kRTLDLazy) != nullptr;
}

std::shared_ptr<CCSModuleSettingsProvider> CCSModuleSettingsProvider::sharedProvider()
{
    return std::make_shared<CCSModuleSettingsProvider>();
}

std::vector<std::string> CCSModuleSettingsProvider::orderedUserEnabledModuleIdentifiers() const
{
    std::vector<std::string> identifiers;
    PlistDictionary configuration = readDictionary(ControlCenterServices::kModuleConfigurationPath);
    auto modules = configuration.find("module-identifiers");
    if (modules == configuration.end())
        return identifiers;
    for (const PlistValue& identifier : modules->second.arrayValue())
        if (identifier.isString())
            identifiers.push_back(identifier.stringValue());
    return identifiers;
}

std::shared_ptr<CCSModuleRepository> CCSModuleRepository::repositoryWithDefaults()
{
    return std::make_shared<CCSModuleRepository>();
}

CCSModuleMetadata CCSModuleRepository::moduleMetadataForModuleIdentifier(const std::string& identifier) const
{
    auto& files = NSFileManager::defaultManager();
    for (const char* folder : {ControlCenterServices::kSystemBundlesPath, ControlCenterServices::kBundlesPath}) {
        for (const std::string& entry : files.enumeratorAtPath(folder)) {
            if (entry.find('/') != std::string::npos || !entry.ends_with(".bundle"))
                continue;
            std::string bundle = std::string(folder) + entry;
            auto info = readDictionary(bundle + "/Info.plist");
            auto found = info.find("CFBundleIdentifier");
            if (found != info.end() && found->second.stringValue() == identifier)
                return {identifier, bundle};
        }
    }
    return {identifier, {}};
}
