#include "frame/NIMStockAppListController.h"

#include "frame/SharedActions.h"
#include "platform/Process.h"

NIM_REGISTER_ABSTRACT_CLASS(NIMStockAppListController, NIMCollapsibleListController);

NIMStockAppListController::NIMStockAppListController(const PageDescription& page, NIMStockApp app)
    : NIMCollapsibleListController(page)
    , _app(std::move(app))
{
}

void NIMStockAppListController::init()
{
    NIMCollapsibleListController::init();
    auto button = NSObject::make<UIBarButtonItem>("Close\n" + _app.name, weak_from_this(), "closeApp");
    button->setCustomView(true);
    navigationItem().rightBarButtonItem = button;
    Process::current().setNeedsCommit(button);
    addAction("closeApp", [this] { closeApp(); });
}

void NIMStockAppListController::closeApp()
{
    ::closeApp(_app.name, _app.bundleIdentifier, *this);
}
