// Control Center > Sliders: percentage labels, borders and colours of the brightness and volume
// sliders.
//
// One group of volume colours serves two switches, the volume slider's and the volume HUD's: either
// shows it, and it goes only when both are off.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "storage/NimbraDomains.h"

class NIMControlCenterSlidersPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMControlCenterSlidersPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
    void prune(HBPreferences& preferences) override;
};

NIM_REGISTER_PAGE(NIMControlCenterSlidersPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kVolumeGroup{
    "volumeColorsChild",       "volumeBackgroundColorParent", "volumeBackgroundColorChild1", "volumeBackgroundColorChild2",
    "volumeSliderColorParent", "volumeSliderColorChild1",     "volumeSliderColorChild2",     "volumeIconColorParent",
    "volumeIconColorChild1",   "volumeIconColorChild2"};

CollapsibleGroupRule volumeGroup(const char* key, const char* row)
{
    return when(key, Condition::on()).editedBy(row)
        .chain({"volumeColorsChild", "volumeBackgroundColorParent", "volumeSliderColorParent", "volumeIconColorParent"}, "volumeColorsParent2")
        .nests({"volumeColorizeBackground", "volumeColorizeSlider", "volumeColorizeIcon"})
        .hiding(kVolumeGroup)
        .notReloaded();
}

std::vector<CollapsibleGroupRule> rules()
{
    auto rules = NIMPageKinds::switches({
        {"showSliderPercentage", "percentageParent", {"percentageChild1", "percentageChild2"}},
        {"brightnessSliderAddBorder", "brightnessBorderParent", numbered("brightnessBorderChild%d", 1, 4)},
        {"volumeSliderAddBorder", "volumeBorderParent", numbered("volumeBorderChild%d", 1, 4)},
        {"brightnessColorizeBackground", "brightnessBackgroundColorParent", {"brightnessBackgroundColorChild1", "brightnessBackgroundColorChild2"}},
        {"brightnessColorizeSlider", "brightnessSliderColorParent", {"brightnessSliderColorChild1", "brightnessSliderColorChild2"}},
        {"brightnessColorizeIcon", "brightnessIconColorParent", {"brightnessIconColorChild1", "brightnessIconColorChild2"}},
    });
    rules.push_back(volumeGroup("colorizeVolumeSlider", "volumeColorsParent1"));
    rules.push_back(volumeGroup("colorizeVolumeHUD", "volumeColorsParent2"));
    for (auto& rule : NIMPageKinds::switches({
             {"volumeColorizeBackground", "volumeBackgroundColorParent", {"volumeBackgroundColorChild1", "volumeBackgroundColorChild2"}},
             {"volumeColorizeSlider", "volumeSliderColorParent", {"volumeSliderColorChild1", "volumeSliderColorChild2"}},
             {"volumeColorizeIcon", "volumeIconColorParent", {"volumeIconColorChild1", "volumeIconColorChild2"}},
         }))
        rules.push_back(std::move(rule));
    return rules;
}

}  // namespace

const PageDescription& NIMControlCenterSlidersPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterSliders",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
        .rules = rules(),
        .captured = {"brightnessBorderChild1", "volumeBorderChild1", "brightnessBorderChild2", "volumeBorderChild2",
                     "brightnessBorderChild3", "volumeBorderChild3", "brightnessBorderChild4", "volumeBorderChild4",
                     "percentageChild1", "percentageChild2", "volumeColorsParent1", "volumeColorsParent2", "volumeColorsChild",
                     "volumeBackgroundColorParent", "volumeBackgroundColorChild1", "volumeBackgroundColorChild2",
                     "volumeSliderColorParent", "volumeSliderColorChild1", "volumeSliderColorChild2", "volumeIconColorParent",
                     "volumeIconColorChild1", "volumeIconColorChild2", "brightnessBackgroundColorChild1",
                     "brightnessBackgroundColorChild2", "brightnessSliderColorChild1", "brightnessSliderColorChild2",
                     "brightnessIconColorChild1", "brightnessIconColorChild2"},
    };
    return page;
}

void NIMControlCenterSlidersPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    const char* other = key == "colorizeVolumeSlider" ? "volumeColorsParent2" : key == "colorizeVolumeHUD" ? "volumeColorsParent1" : nullptr;
    if (!other || value.boolValue()) {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    if (!valueOfRow(other).boolValue())
        remove(kVolumeGroup);
}

void NIMControlCenterSlidersPrefsListController::prune(HBPreferences& preferences)
{
    for (auto& rule : page().rules) {
        if (rule.key == "colorizeVolumeSlider" && !preferences.boolForKey("colorizeVolumeSlider") &&
            !preferences.boolForKey("colorizeVolumeHUD"))
            remove(kVolumeGroup, false);
        pruneRule(rule, preferences);
    }
}
