#include "storage/NIMAppPicker.h"

#include "frame/NIMCollapsibleListController.h"
#include "platform/SparkAppListTableViewController.h"

namespace NIMAppPicker {

void Push::operator()(NIMCollapsibleListController& page) const
{
    auto picker = NSObject::make<SparkAppListTableViewController>(storeIdentifier, key);
    if (limit == Limit::SingleApp)
        picker->setMaxEnabled(1);
    if (auto navigation = page.navigationController())
        navigation->pushViewController(picker, true);
    page.navigationItem().setHidesBackButton(false);
}

PageAction action(std::string storeIdentifier, std::string key, Limit limit)
{
    return Push{std::move(storeIdentifier), std::move(key), limit};
}

std::optional<std::size_t> chosenCount(const PageAction& action)
{
    const Push* push = action.target<Push>();
    if (!push)
        return std::nullopt;
    return SparkAppListTableViewController(push->storeIdentifier, push->key).enabledApplications().size();
}

}  // namespace NIMAppPicker
