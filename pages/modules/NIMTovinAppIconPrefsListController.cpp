// Tovin > App Icon: the icon, its glow, and the glow's colour.
//
// One selector, three tests, kept as they are: switching the icon or its glow on shows the custom glow
// colour only for type 2; the selector itself shows it for every type but 1; the reload hides it
// only for type 1.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinAppIconPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinAppIconPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinAppIcon",
        .domain = NimbraDomains::identifier(".tovin"),
        .fixesColorRows = true,
        .rules = {
            when("showAppIcon", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 5), "topLevelSwitch")
                .nests({"appIconAddGlow"}).reloadDefaulting(PlistValue(true)),
            when("appIconAddGlow", Condition::on()).editedBy("topLevelChild5").chain({"glowChild1", "glowChild2"}, "topLevelChild5")
                .nests({"customGlowColor"}),
            when("appIconGlowColorType", Condition::notEqual(1)).editedBy("glowChild2").chain({"glowChild2Child"}, "glowChild2")
                .reloadDefaulting(PlistValue(1)),
            when("appIconGlowColorType", Condition::equal(2)).named("customGlowColor").editedBy("glowChild2")
                .chain({"glowChild2Child"}, "glowChild2").notReloaded(),
        },
    };
    return page;
}
