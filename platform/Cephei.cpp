#include "platform/Cephei.h"

#include "platform/Events.h"
#include "platform/Process.h"

NIM_REGISTER_CLASS(HBListController, PSListController);

std::shared_ptr<HBAppearanceSettings> HBListController::hb_appearanceSettings() const
{
    if (_appearanceSettings)
        return _appearanceSettings;
    // Cephei hands the scheme on down the navigation stack: the nearest page below this one that has one.
    std::shared_ptr<HBAppearanceSettings> inherited;
    if (auto navigation = navigationController()) {
        for (auto& controller : navigation->viewControllers()) {
            if (controller.get() == this)
                break;
            if (auto page = std::dynamic_pointer_cast<HBListController>(controller); page && page->_appearanceSettings)
                inherited = page->_appearanceSettings;
        }
    }
    return inherited;
}

namespace HBRespringController {

void respringAndReturnTo(const std::string& url)
{
    Process::current().events().record(Events::Respring{url});
}

}  // namespace HBRespringController
