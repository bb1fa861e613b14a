// Control Center: the group's master switch over its options (vertical position, background
// colour or image, module links, date and time in the status bar), its pages, an information alert
// about the modules Nimbra adds, and the group's resets.
//
// Every rule of the page, re-applied after the master switch too, does nothing when its first row
// is already shown.
//
// A background style other than 0, 1 and 2 leaves the background rows as they are when chosen,
// and the reload removes neither group for it.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

class NIMControlCenterRootPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMControlCenterRootPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
};

NIM_REGISTER_PAGE(NIMControlCenterRootPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kDateTime = numbered("dateTimeChild%d", 1, 6);
const std::vector<std::string> kImages = numbered("backgroundImageChild%d", 1, 6);
const std::vector<std::string> kColors{"backgroundColorChild1", "backgroundColorChild2"};

constexpr const char* kModulesInformation =
    "Nimbra offers 4 modules for the Control Center:\n\n"
    "1) A Power Module that offers 8 options: respring, lock, safe mode, uicache, power off, reboot, ldrestart, reboot userspace.\n\n"
    "2) A Screenshot Module that when tapped, closes the cc and takes a screenshot.\n\n"
    "3) A 'Low Power Mode' module that switches between normal and low power mode when tapped. that module is only useful on "
    "iPads since it is not provided by the iPadOS.\n\n"
    "4) A Mute Module that switches between normal state and silent state when tapped. That module is only useful on iPhones "
    "since it is not provided by the iOS, especially when you have set a custom action for the ringer switch but you still "
    "want to be able to enable / disable the silent mode.\n\n"
    "Go to control center settings page in the root of the Settings app to add those modules to Control Center.";

}  // namespace

const PageDescription& NIMControlCenterRootPrefsListController::description()
{
    // Listed in the order the reload applies them: the background rows before the vertical position.
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterRoot",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 24), "topLevelSwitch")
                .nests({"controlCenterVerticalPosition", "backgroundColors", "backgroundImages", "enableModulesLinkWithSettingsPages",
                        "showDateTimeInStatusBar"})
                .hiding(numbered("topLevelChild%d", 1, 24) + kDateTime + kImages +
                        std::vector<std::string>{"verticalPositionChild", "linkChild"} + kColors),
            when("backgroundStyle", Condition::equal(1)).named("backgroundColors").editedBy("topLevelChild17")
                .chain(kColors, "topLevelChild17").reloadRemovingWhen(Condition::in({0, 2})).guardedAlsoWhenNested(),
            when("backgroundStyle", Condition::equal(2)).named("backgroundImages").editedBy("topLevelChild17")
                .chain(kImages, "topLevelChild17").reloadRemovingWhen(Condition::in({0, 1})).guardedAlsoWhenNested(),
            when("controlCenterVerticalPosition", Condition::equal(2)).editedBy("topLevelChild15")
                .chain({"verticalPositionChild"}, "topLevelChild15").guardedAlsoWhenNested(),
            when("enableModulesLinkWithSettingsPages", Condition::on()).editedBy("topLevelChild19").chain({"linkChild"}, "topLevelChild19")
                .guardedAlsoWhenNested(),
            when("showDateTimeInStatusBar", Condition::on()).editedBy("topLevelChild21").chain(kDateTime, "topLevelChild21")
                .guardedAlsoWhenNested(),
        },
        .actions = {
            {"saveTextCell:", PageActions::saveTextCell()},
            {"showInfoAboutNimbraModules", PageActions::showAlert(kModulesInformation, {{"Dismiss", UIAlertActionStyle::Cancel}})},
            {"resetSettings", confirmedReset(groupSettingsReset("Control Center", ".controlcenter", {".rearrangeconnectivity"}))},
            {"resetColors", confirmedReset(groupColorsReset("Control Center", ".controlcenter"))},
        },
    };
    return page;
}

void NIMControlCenterRootPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key != "backgroundStyle") {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    switch (value.integerValue()) {
    case 0:
        remove(kColors + kImages);
        break;
    case 1:
        remove(kImages);
        show(rule("backgroundStyle"));
        break;
    case 2:
        remove(kColors);
        show(*page().ruleNamed("backgroundImages"));
        break;
    default:
        break;
    }
}
