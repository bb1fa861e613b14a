#include "storage/NIMAppPicker.h"

#include "frame/NIMCollapsibleListController.h"
#include "platform/SparkAppListTableViewController.h"

namespace NIMAppPicker {

PageAction action(std::string storeIdentifier, std::string key, Limit limit)
{
    return [=](NIMCollapsibleListController& page) {
        auto picker = NSObject::make<SparkAppListTableViewController>(storeIdentifier, key);
        if (limit == Limit::SingleApp)
            picker->setMaxEnabled(1);
        if (auto navigation = page.navigationController())
            navigation->pushViewController(picker, true);
        page.navigationItem().setHidesBackButton(false);
    };
}

}  // namespace NIMAppPicker
