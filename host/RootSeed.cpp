#include "host/RootSeed.h"

#include "platform/AtomicFile.h"
#include "platform/PlistValue.h"
#include "platform/PropertyListSerialization.h"

#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

// The apps every device has, as LaunchServices lists them.
const std::pair<const char*, const char*> kStockApps[] = {
    {"com.apple.AppStore", "App Store"},        {"com.apple.Bridge", "Watch"},
    {"com.apple.camera", "Camera"},             {"com.apple.calculator", "Calculator"},
    {"com.apple.mobilecal", "Calendar"},        {"com.apple.mobiletimer", "Clock"},
    {"com.apple.MobileAddressBook", "Contacts"}, {"com.apple.facetime", "FaceTime"},
    {"com.apple.DocumentsApp", "Files"},        {"com.apple.findmy", "Find My"},
    {"com.apple.Health", "Health"},             {"com.apple.Home", "Home"},
    {"com.apple.mobilemail", "Mail"},           {"com.apple.Maps", "Maps"},
    {"com.apple.MobileSMS", "Messages"},        {"com.apple.Music", "Music"},
    {"com.apple.mobilenotes", "Notes"},         {"com.apple.mobilephone", "Phone"},
    {"com.apple.mobileslideshow", "Photos"},    {"com.apple.podcasts", "Podcasts"},
    {"com.apple.reminders", "Reminders"},       {"com.apple.mobilesafari", "Safari"},
    {"com.apple.Preferences", "Settings"},      {"com.apple.shortcuts", "Shortcuts"},
    {"com.apple.stocks", "Stocks"},             {"com.apple.tips", "Tips"},
    {"com.apple.tv", "TV"},                     {"com.apple.VoiceMemos", "Voice Memos"},
    {"com.apple.Passbook", "Wallet"},           {"com.apple.weather", "Weather"},
};

// Control Center modules: (folder, bundle name, identifier, display name, localised display name).
struct Module {
    const char* folder;
    const char* bundle;
    const char* identifier;
    const char* displayName;
    const char* localizedName;
};
const Module kModules[] = {
    {"System/Library/ControlCenter/Bundles", "ConnectivityModule", "com.apple.control-center.ConnectivityModule", nullptr, nullptr},
    {"System/Library/ControlCenter/Bundles", "OrientationLockModule", "com.apple.control-center.OrientationLockModule", nullptr, nullptr},
    {"System/Library/ControlCenter/Bundles", "DoNotDisturbModule", "com.apple.donotdisturb.DoNotDisturbModule", nullptr, nullptr},
    {"System/Library/ControlCenter/Bundles", "FlashlightModule", "com.apple.control-center.FlashlightModule", nullptr, "Flashlight"},
    {"System/Library/ControlCenter/Bundles", "CalculatorModule", "com.apple.control-center.CalculatorModule", "Calculator", nullptr},
    {"System/Library/ControlCenter/Bundles", "LowPowerModule", "com.apple.control-center.LowPowerModule", nullptr, "Low Power Mode"},
    {"System/Library/ControlCenter/Bundles", "CameraModule", "com.apple.control-center.CameraModule", "Camera", nullptr},
    {"Library/ControlCenter/Bundles", "NimbraPowerModule", "com.veltram.nimbrapowercontrolmodule", "Power", nullptr},
    {"Library/ControlCenter/Bundles", "NimbraScreenshotModule", "com.veltram.nimbrascreenshotmodule", "Screenshot", nullptr},
};

/// Creates a property-list file unless something is already there.
void createPlist(const fs::path& path, PlistValue value)
{
    AtomicFile::create(path, PropertyListSerialization::dataWithPropertyList(value, PropertyListSerialization::Format::XML));
}

void seedControlCenter(const fs::path& root)
{
    PlistArray enabled;
    for (const Module& module : kModules) {
        fs::path bundle = root / module.folder / (std::string(module.bundle) + ".bundle");
        PlistDictionary info{{"CFBundleIdentifier", PlistValue(module.identifier)}, {"CFBundleName", PlistValue(module.bundle)}};
        if (module.displayName)
            info["CFBundleDisplayName"] = PlistValue(module.displayName);
        createPlist(bundle / "Info.plist", PlistValue(info));
        if (module.localizedName)
            createPlist(bundle / "en.lproj/InfoPlist.strings", PlistValue(PlistDictionary{{"CFBundleDisplayName", PlistValue(module.localizedName)}}));
        enabled.push_back(PlistValue(module.identifier));
    }
    createPlist(root / "var/mobile/Library/ControlCenter/ModuleConfiguration.plist",
               PlistValue(PlistDictionary{{"module-identifiers", PlistValue(enabled)}}));
}

}  // namespace

void seedRoot(const fs::path& root)
{
    std::error_code ec;
    fs::path marker = root / ".nimbra-prefs-seeded";
    if (fs::exists(marker, ec))
        return;
    fs::create_directories(root, ec);
    fs::path system = root / ".rootfs";
    // The system volume's frameworks (stand-ins: the platform layer defines their symbols and classes).
    for (const char* framework : {"System/Library/PrivateFrameworks/BackBoardServices.framework/BackBoardServices",
                                  "System/Library/PrivateFrameworks/ControlCenterServices.framework/ControlCenterServices"})
        AtomicFile::create(system / framework, "Mach-O stand-in\n");
    // The installed apps the app pickers list.
    PlistArray apps;
    for (auto& [identifier, name] : kStockApps)
        apps.push_back(PlistValue(PlistDictionary{{"CFBundleIdentifier", PlistValue(identifier)}, {"CFBundleDisplayName", PlistValue(name)}}));
    createPlist(system / "var/mobile/Library/MobileInstallation/InstalledApplications.plist", PlistValue(std::move(apps)));
    seedControlCenter(root);
    AtomicFile::create(marker, "");
}
