// Control Center > Power Module > Rearrange: the module's eight buttons in their order, to be
// dragged into a new one. A first visit stores the default order.

#include "frame/NIMRearrangeListController.h"
#include "platform/HBPreferences.h"
#include "storage/NimbraDomains.h"

class NIMControlCenterPowerModuleRearrangePrefsListController : public NIMRearrangeListController {
public:
    NIMControlCenterPowerModuleRearrangePrefsListController()
        : NIMRearrangeListController(description(), {"powerModulePos%d", 8,
                                                     {{"NimbraRespringButtonController", "Respring"},
                                                      {"NimbraLockButtonController", "Lock"},
                                                      {"NimbraSafemodeButtonController", "Safe Mode"},
                                                      {"NimbraUICacheButtonController", "UICache"},
                                                      {"NimbraPowerDownButtonController", "Power Down"},
                                                      {"NimbraRebootButtonController", "Reboot"},
                                                      {"NimbraLDRestartButtonController", "LDRestart"},
                                                      {"NimbraUserspaceRebootButtonController", "Userspace Reboot"}},
                                                     "Drag the buttons into the order you like"})
    {
    }
    static const PageDescription& description();

    void init() override
    {
        NIMRearrangeListController::init();
        _preferences = HBPreferences::preferencesForIdentifier(page().domain);
    }

    /// Stores the buttons in their default order.
    void generateDefaultButtonsOrder()
    {
        const char* defaults[] = {"NimbraRespringButtonController", "NimbraLockButtonController", "NimbraSafemodeButtonController",
                                  "NimbraUICacheButtonController", "NimbraPowerDownButtonController", "NimbraRebootButtonController",
                                  "NimbraLDRestartButtonController", "NimbraUserspaceRebootButtonController"};
        for (int slot = 0; slot < 8; ++slot)
            _preferences->setObject(PlistValue(defaults[slot]), slotKey(slot));
    }

protected:
    void prepareOrder() override
    {
        if (_preferences->objectForKey(slotKey(0)).isNil())
            generateDefaultButtonsOrder();
    }
    PlistValue storedSlot(const std::string& key) override { return _preferences->objectForKey(key); }
    void storeSlots(const std::vector<std::pair<std::string, std::string>>& slots) override
    {
        for (auto& [key, name] : slots)
            _preferences->setObject(PlistValue(name), key);
    }

private:
    std::shared_ptr<HBPreferences> _preferences;
};

NIM_REGISTER_PAGE(NIMControlCenterPowerModuleRearrangePrefsListController, NIMRearrangeListController);

const PageDescription& NIMControlCenterPowerModuleRearrangePrefsListController::description()
{
    static const PageDescription page{.domain = NimbraDomains::identifier(".controlcenter")};
    return page;
}
