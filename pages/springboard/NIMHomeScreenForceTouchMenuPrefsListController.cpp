// Home Screen > Force Touch Menu: the options of the icons' menu. From iOS 14 the widget row does
// not apply and is shown greyed out.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "platform/Process.h"
#include "storage/NimbraDomains.h"

class NIMHomeScreenForceTouchMenuPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMHomeScreenForceTouchMenuPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

    void viewDidLoad() override
    {
        NIMGeneralListControllerWithRespringButton::viewDidLoad();
        reloadSpecifiers();
    }

protected:
    void prune(HBPreferences&) override
    {
        if (Process::current().coreFoundationVersion() >= 1740.0)
            if (auto row = specifierForID("hideForceTouchWidgetChild"))
                row->setProperty(PlistValue(false), "enabled");
    }
};

NIM_REGISTER_PAGE(NIMHomeScreenForceTouchMenuPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMHomeScreenForceTouchMenuPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenForceTouchMenu",
        .domain = NimbraDomains::identifier(".homescreen"),
        .referencedIds = {"hideForceTouchWidgetChild"},
    };
    return page;
}
