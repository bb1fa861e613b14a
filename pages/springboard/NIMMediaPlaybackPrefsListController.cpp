// Lock Screen > Media Playback: how playback behaves on the lock screen. Every row is always shown.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMMediaPlaybackPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMMediaPlaybackPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/MediaPlayback",
        .domain = NimbraDomains::identifier(".lockscreen"),
    };
    return page;
}
