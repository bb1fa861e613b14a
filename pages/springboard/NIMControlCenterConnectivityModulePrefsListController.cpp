// Control Center > Connectivity Module: the module's size, border, background, rearrangement,
// toggles disabled while locked, and its colours (one set for all toggles, or each toggle's own,
// from mode 2 on).

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "storage/NimbraDomains.h"

class NIMControlCenterConnectivityModulePrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMControlCenterConnectivityModulePrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override
    {
        if (key != "connectivityColorsMode") {
            NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
            return;
        }
        bool separate = value.integerValue() >= 2;
        hide(*page().ruleNamed(separate ? "allColors" : "separateColors"));
        show(*page().ruleNamed(separate ? "separateColors" : "allColors"));
    }
};

NIM_REGISTER_PAGE(NIMControlCenterConnectivityModulePrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

std::vector<CollapsibleGroupRule> rules()
{
    auto rules = NIMPageKinds::switches({
        {"customConnectivitySizeEnabled", "customSizeParent", numbered("customSizeChild%d", 1, 6)},
        {"connectivityEnableBorder", "borderParent", numbered("borderChild%d", 1, 4)},
    });
    rules.push_back(when("connectivityBackgroundStyle", Condition::atLeast(2)).editedBy("backgroundColorParent")
                        .chain({"backgroundColorChild1", "backgroundColorChild2"}, "backgroundColorParent"));
    for (auto& rule : NIMPageKinds::switches({
             {"enableRearrangementOfToggles", "rearrangeParent", {"rearrangeChild"}},
             {"disableConnectivityTogglesWhenLocked", "disableParent", {"disableChild"}},
         }))
        rules.push_back(std::move(rule));
    rules.push_back(when("enableCustomConnectivityTogglesColor", Condition::on()).editedBy("customColorParent")
                        .chain({"customColorChild1"}, "customColorParent").nests({"allColors", "separateColors"}));
    rules.push_back(when("connectivityColorsMode", Condition::below(2)).named("allColors").editedBy("customColorChild1")
                        .chain(numbered("allColorsChild%d", 1, 6), "customColorChild1"));
    rules.push_back(when("connectivityColorsMode", Condition::atLeast(2)).named("separateColors").editedBy("customColorChild1")
                        .chain(numbered("customColor%d", 1, 4), "customColorChild1"));
    return rules;
}

}  // namespace

const PageDescription& NIMControlCenterConnectivityModulePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterConnectivityModule",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
        .rules = rules(),
    };
    return page;
}
