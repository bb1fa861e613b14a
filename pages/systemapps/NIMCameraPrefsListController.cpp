// Camera: the Camera app's customisations behind their master switch (the domain is shared with Photos).

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMCameraPrefsListController, "Camera", "com.apple.camera");

const PageDescription& NIMCameraPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/Camera",
        .domain = NimbraDomains::identifier(".cameraphotos"),
        .rules = {
            when("cameraEnabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 13), "topLevelSwitch"),
        },    };
    return page;
}
