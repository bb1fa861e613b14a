// Home Screen > Folders: icon scale, the folder icon's colour and transparency, the folder title
// (font size, colour) and the folder background (colour, corner radius).
//
// Hiding the folder background removes "bgChild1Child" twice and leaves "bgChild2Child" on screen
// until the page is reloaded; kept as it is. Showing the background again then inserts the corner
// radius row a second time when that option is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMHomeScreenFoldersPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

CollapsibleGroupRule single(const char* key, const char* parent, const char* child)
{
    return when(key, Condition::on()).editedBy(parent).chain({child}, parent);
}

}  // namespace

const PageDescription& NIMHomeScreenFoldersPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenFolders",
        .domain = NimbraDomains::identifier(".homescreen"),
        .fixesColorRows = true,
        .rules = {
            single("enableCustomFolderIconsScale", "iconsScaleParent", "iconsScaleChild"),
            single("enableCustomFolderIconBackgroundColor", "iconColorParent", "iconColorChild"),
            single("enableCustomFolderIconBackgroundAlpha", "iconTransparencyParent", "iconTransparencyChild"),
            when("hideFolderTitle", Condition::off()).editedBy("titleParent").chain({"titleChild1", "titleChild2", "titleChild3"}, "titleParent")
                .nests({"enableFolderTitleCustomFontSize", "enableCustomFolderTitleColor"})
                .hiding({"titleChild1", "titleChild1Child", "titleChild2", "titleChild3", "titleChild3Child"}),
            when("hideFolderBackground", Condition::off()).editedBy("bgParent").chain({"bgChild1", "bgChild2"}, "bgParent")
                .nests({"enableCustomFolderBackgroundColor", "enableCustomFolderCornerRadius"})
                .hiding({"bgChild1", "bgChild1Child", "bgChild2", "bgChild1Child"})
                .reloadHiding({"bgChild1", "bgChild2", "bgChild1Child", "bgChild2Child"}),
            single("enableFolderTitleCustomFontSize", "titleChild1", "titleChild1Child"),
            single("enableCustomFolderTitleColor", "titleChild3", "titleChild3Child"),
            single("enableCustomFolderBackgroundColor", "bgChild1", "bgChild1Child"),
            single("enableCustomFolderCornerRadius", "bgChild2", "bgChild2Child"),
        },
        .insertedAgain = {"bgChild2Child"},
    };
    return page;
}
