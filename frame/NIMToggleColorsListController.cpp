#include "frame/NIMToggleColorsListController.h"

#include "frame/NIMPageCatalog.h"
#include "frame/SharedActions.h"
#include "platform/Process.h"

NIM_REGISTER_ABSTRACT_CLASS(NIMToggleColorsListController, NIMGeneralListControllerWithRespringButton);

namespace {

// The Control Center preferences all per-toggle pages read, replaced on every initialisation.
struct TogglePreferences {
    std::shared_ptr<HBPreferences> preferences;
};

struct ToggleColor {
    const char* label;
    const char* name;
    const char* fallback;
};

constexpr ToggleColor kBackgroundColors[] = {{"BG Enabled Color", "BGEnabledColor", "#ffffff"}, {"BG Disabled Color", "BGDisabledColor", "#000000"}};
constexpr ToggleColor kIconColors[] = {{"Icon Enabled Color", "IconEnabledColor", "#e67e22"}, {"Icon Disabled Color", "IconDisabledColor", "#95a5a6"}};
constexpr ToggleColor kBorderColors[] = {{"Border Enabled Color", "BorderEnabledColor", "#e67e22"},
                                         {"Border Disabled Color", "BorderDisabledColor", "#95a5a6"}};

constexpr const char* kPowerModule = "com.veltram.nimbrapowercontrolmodule";

}  // namespace

NIMToggleColorsListController::NIMToggleColorsListController(const PageDescription& page, std::string suffix)
    : NIMGeneralListControllerWithRespringButton(page)
    , _suffix(std::move(suffix))
{
}

void NIMToggleColorsListController::init()
{
    NIMGeneralListControllerWithRespringButton::init();
    Process::current().global<TogglePreferences>().preferences = HBPreferences::preferencesForIdentifier(page().domain);
}

SpecifierArray& NIMToggleColorsListController::specifiers()
{
    if (specifiersLoaded() && !_specifiers->empty())
        return *_specifiers;
    SpecifierArray rows;
    auto framework = NSBundle::bundleWithPath(ControlCenterServices::kFrameworkPath);
    if (framework && framework->load() && NSClassFromString("CCSModuleRepository") && NSClassFromString("CCSModuleSettingsProvider")) {
        auto repository = CCSModuleRepository::repositoryWithDefaults();
        for (const std::string& identifier : CCSModuleSettingsProvider::sharedProvider()->orderedUserEnabledModuleIdentifiers()) {
            CCSModuleMetadata metadata = repository->moduleMetadataForModuleIdentifier(identifier);
            if (metadata.moduleBundleURL.empty())
                continue;
            if (auto bundle = NSBundle::bundleWithPath(metadata.moduleBundleURL))
                for (auto& row : generateSpecifiersForBundle(*bundle))
                    rows.push_back(row);
        }
    }
    fixColorPicker(rows, shared_from_this());
    setSpecifiers(std::move(rows));
    return *_specifiers;
}

SpecifierArray NIMToggleColorsListController::generateSpecifiersForBundle(const NSBundle& bundle)
{
    const std::string identifier = bundle.infoDictionary().contains("CFBundleIdentifier")
                                       ? bundle.infoDictionary().at("CFBundleIdentifier").stringValue()
                                       : std::string();
    if (identifier == kPowerModule)
        return {};
    auto text = [](const PlistDictionary& info, const char* key) {
        auto found = info.find(key);
        return found == info.end() ? std::string() : found->second.stringValue();
    };
    std::string name = text(bundle.localizedInfoDictionary(), "CFBundleDisplayName");
    if (name.empty())
        name = text(bundle.infoDictionary(), "CFBundleDisplayName");
    if (name.empty()) {
        if (identifier == "com.apple.control-center.OrientationLockModule")
            name = "Orientation Lock";
        else if (identifier == "com.apple.donotdisturb.DoNotDisturbModule")
            name = "Do Not Disturb";
        else if (identifier.starts_with("com.apple"))
            return {};
        else
            name = text(bundle.infoDictionary(), "CFBundleName");
    }

    auto target = weak_from_this();
    SpecifierArray rows;
    rows.reserve(5);
    auto header = PSSpecifier::preferenceSpecifierNamed(name, target, nullptr, PSCellType::Group);
    header->setProperty(PlistValue("PSGroupCell"), "cell");
    header->setProperty(PlistValue(name), "label");
    rows.push_back(header);
    auto addColors = [&](const auto& colors) {
        for (const ToggleColor& color : colors) {
            auto row = PSSpecifier::preferenceSpecifierNamed(color.label, target, nullptr, PSCellType::Link);
            row->setProperty(PlistValue("PSLinkCell"), "cell");
            row->setProperty(PlistValue(NSClassFromString("NimbraColorPickerTableCell")), "cellClass");
            row->setProperty(PlistValue(color.label), "label");
            row->setProperty(PlistValue(page().domain + ".colors"), "defaults");
            row->setProperty(PlistValue(identifier + "_" + color.name + _suffix), "key");
            row->setProperty(PlistValue(false), "showAlpha");
            row->setProperty(PlistValue(color.fallback), "default");
            rows.push_back(row);
        }
    };
    auto& preferences = *Process::current().global<TogglePreferences>().preferences;
    if (preferences.integerForKey("togglesBackgroundColorStyle") == 2)
        addColors(kBackgroundColors);
    if (preferences.integerForKey("togglesIconColorStyle") == 1)
        addColors(kIconColors);
    if (preferences.boolForKey("enableTogglesBorder"))
        addColors(kBorderColors);
    return rows;
}
