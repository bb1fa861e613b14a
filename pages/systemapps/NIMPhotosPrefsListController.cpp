// Photos: the Photos app's customisations behind their master switch (the domain is shared with Camera).

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMPhotosPrefsListController, "Photos", "com.apple.mobileslideshow");

const PageDescription& NIMPhotosPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/Photos",
        .domain = NimbraDomains::identifier(".cameraphotos"),
        .rules = {
            when("photosEnabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 6), "topLevelSwitch"),
        },    };
    return page;
}
