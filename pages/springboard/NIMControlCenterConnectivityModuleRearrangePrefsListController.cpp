// Control Center > Connectivity Module > Rearrange: the module's six toggles in their order, to be
// dragged into a new one. The order lives in a file of its own that the running module fills;
// until it exists the page asks for a respring.

#include "frame/NIMRearrangeListController.h"
#include "platform/NSFileManager.h"
#include "platform/PropertyListSerialization.h"
#include "storage/NimbraDomains.h"

class NIMControlCenterConnectivityModuleRearrangePrefsListController : public NIMRearrangeListController {
public:
    NIMControlCenterConnectivityModuleRearrangePrefsListController()
        : NIMRearrangeListController(description(), {"connectivityPos%d", 6,
                                                      {{"CCUIConnectivityAirplaneViewController", "Airplane Mode"},
                                                       {"CCUIConnectivityCellularDataViewController", "Cellular"},
                                                       {"CCUIConnectivityWifiViewController", "WiFi"},
                                                       {"CCUIConnectivityBluetoothViewController", "Bluetooth"},
                                                       {"CCUIConnectivityAirDropViewController", "AirDrop"},
                                                       {"CCUIConnectivityHotspotViewController", "Hotspot"}},
                                                      "Drag the toggles into the order you like"})
    {
    }
    static const PageDescription& description();

    /// Reads the order file (an empty order when it is missing or unreadable).
    void init() override
    {
        NIMRearrangeListController::init();
        auto bytes = NSFileManager::defaultManager().contentsAtPath(file());
        auto stored = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
        _stored = stored ? stored->dictionaryValue() : PlistDictionary{};
    }

protected:
    PlistValue storedSlot(const std::string& key) override
    {
        auto found = _stored.find(key);
        return found == _stored.end() ? PlistValue() : found->second;
    }
    /// The whole dictionary is written again, atomically.
    void storeSlots(const std::vector<std::pair<std::string, std::string>>& slots) override
    {
        for (auto& [key, name] : slots)
            _stored[key] = PlistValue(name);
        NSFileManager::defaultManager().writeAtomically(
            file(), PropertyListSerialization::dataWithPropertyList(PlistValue(_stored), PropertyListSerialization::Format::XML));
    }
    SpecifierArray rowsForEmptyOrder() override
    {
        auto message = PSSpecifier::groupSpecifierWithName("Respring The Device For This Page To Be Populated With The Connectivity Toggles");
        message->setProperty(PlistValue(1), "alignment");
        return {message};
    }

private:
    static std::string file() { return NimbraDomains::groupFile(".controlcenter", ".rearrangeconnectivity"); }
    PlistDictionary _stored;
};

NIM_REGISTER_PAGE(NIMControlCenterConnectivityModuleRearrangePrefsListController, NIMRearrangeListController);

const PageDescription& NIMControlCenterConnectivityModuleRearrangePrefsListController::description()
{
    static const PageDescription page{.domain = NimbraDomains::identifier(".controlcenter")};
    return page;
}
