#include "frame/PageActions.h"

#include "frame/NIMCollapsibleListController.h"
#include "platform/DarwinNotifyCenter.h"

namespace PageActions {

PageAction saveTextCell()
{
    return [](NIMCollapsibleListController& page) { page.view()->endEditing(true); };
}

PageAction postNotification(std::string name)
{
    return [name = std::move(name)](NIMCollapsibleListController&) {
        CFNotificationCenterGetDarwinNotifyCenter().postNotification(name);
    };
}

}  // namespace PageActions
