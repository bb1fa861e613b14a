#include "storage/NIMSpecialThanksPrefsListController.h"

#include "frame/NIMPageCatalog.h"

NIM_REGISTER_PAGE(NIMSpecialThanksPrefsListController, NIMCollapsibleListController);

const PageDescription& NIMSpecialThanksPrefsListController::description()
{
    static const PageDescription page{.definition = "SpecialThanks"};
    return page;
}
