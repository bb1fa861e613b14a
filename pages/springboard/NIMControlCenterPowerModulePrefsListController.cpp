// Control Center > Power Module: the module's background, border and colours (one set for all
// buttons, or each button's own for mode 2 exactly), and its rearrangement.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

class NIMControlCenterPowerModulePrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMControlCenterPowerModulePrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override
    {
        if (key != "powerModuleColorsMode") {
            NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
            return;
        }
        bool individual = value.integerValue() == 2;
        hide(*page().ruleNamed(individual ? "allColors" : "individualColors"));
        show(*page().ruleNamed(individual ? "individualColors" : "allColors"));
    }
};

NIM_REGISTER_PAGE(NIMControlCenterPowerModulePrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterPowerModulePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterPowerModule",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
        .rules = {
            when("powerModuleBackgroundStyle", Condition::atLeast(2)).editedBy("backgroundColorParent")
                .chain({"backgroundColorChild1", "backgroundColorChild2"}, "backgroundColorParent"),
            when("powerModuleEnableBorder", Condition::on()).editedBy("borderParent").chain(numbered("borderChild%d", 1, 4), "borderParent"),
            when("enableCustomPowerModuleTogglesColor", Condition::on()).editedBy("customColorParent")
                .chain({"customColorChild"}, "customColorParent").nests({"individualColors", "allColors"}),
            when("powerModuleColorsMode", Condition::equal(2)).named("individualColors").editedBy("customColorChild")
                .chain({"customColorIndiv1", "customColorIndiv2"}, "customColorChild"),
            when("powerModuleColorsMode", Condition::notEqual(2)).named("allColors").editedBy("customColorChild")
                .chain({"customColorAll1", "customColorAll2"}, "customColorChild"),
        },
    };
    return page;
}
