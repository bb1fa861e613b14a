// Lock Screen > Do Not Disturb and Silent Mode: two indicators of one shape, each with its tint
// and glow colours.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMLockScreenDNDSilentModeIndicatorPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

/// An indicator's switch: its eight rows chained from its parent, then the tint and glow colours of
/// the rows that are on.
CollapsibleGroupRule indicator(const std::string& key, const std::string& prefix, const std::string& tint, const std::string& glow)
{
    return when(key, Condition::on()).editedBy(prefix + "Parent").chain(numbered(prefix + "Child%d", 1, 8), prefix + "Parent").nests({tint, glow});
}

CollapsibleGroupRule colour(const std::string& key, const std::string& row)
{
    return when(key, Condition::on()).editedBy(row).chain({row + "Child"}, row);
}

}  // namespace

const PageDescription& NIMLockScreenDNDSilentModeIndicatorPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/LockScreenDNDSilentModeIndicator",
        .domain = NimbraDomains::identifier(".lockscreen"),
        .fixesColorRows = true,
        .rules = {
            indicator("showDNDIndicator", "dnd", "enableDNDTintColor", "enableDNDGlow"),
            indicator("showSilentIndicator", "silent", "enableSilentTintColor", "enableSilentGlow"),
            colour("enableDNDTintColor", "dndChild1"),
            colour("enableDNDGlow", "dndChild2"),
            colour("enableSilentTintColor", "silentChild1"),
            colour("enableSilentGlow", "silentChild2"),
        },
    };
    return page;
}
