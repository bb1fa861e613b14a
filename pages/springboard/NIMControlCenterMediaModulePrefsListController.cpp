// Control Center > Media Module: its size, static and dynamic colours and border. From iOS 15 the
// size options do not apply and are shown greyed out.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "platform/Process.h"
#include "storage/NimbraDomains.h"

class NIMControlCenterMediaModulePrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMControlCenterMediaModulePrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void prune(HBPreferences& preferences) override
    {
        NIMGeneralListControllerWithRespringButton::prune(preferences);
        if (Process::current().coreFoundationVersion() < 1770.106)
            return;
        for (const char* id : {"mediaSizeParent", "mediaSizeChild"})
            if (auto row = specifierForID(id))
                row->setProperty(PlistValue(false), "enabled");
    }
};

NIM_REGISTER_PAGE(NIMControlCenterMediaModulePrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterMediaModulePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterMediaModule",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
        .rules = NIMPageKinds::switches({
            {"customMediaModuleSizeEnabled", "mediaSizeParent", {"mediaSizeChild"}},
            {"enableMediaModuleStaticColors", "staticColorsParent", numbered("staticColorsChild%d", 1, 8)},
            {"enableMediaModuleDynamicColors", "colorsParent", {"colorsChild1", "colorsChild2", "colorsChild3"}},
            {"addMediaModuleBorder", "borderParent", {"borderChild1", "borderChild2"}},
        }),
    };
    return page;
}
