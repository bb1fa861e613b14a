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

PageAction showAlert(std::string message, std::vector<std::pair<std::string, UIAlertActionStyle>> buttons)
{
    return [message = std::move(message), buttons = std::move(buttons)](NIMCollapsibleListController& page) {
        auto alert = UIAlertController::alertControllerWithTitle("Nimbra", message);
        for (auto& [title, style] : buttons)
            alert->addAction({title, style, nullptr});
        page.presentViewController(alert, true);
    };
}

}  // namespace PageActions
