// Home Screen > Dock: the dock's background (radius and one or four colours), its type with the
// custom bottom inset, and its icon scale.
//
// Changing the colour mode from one colour to four adds nothing until the page is reloaded, since
// the four rows are only inserted when the first is not shown; kept as it is.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

class NIMHomeScreenDockPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMHomeScreenDockPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
};

NIM_REGISTER_PAGE(NIMHomeScreenDockPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kColors = numbered("bgColorChild%d", 1, 4);
const std::vector<std::string> kLaterColors = numbered("bgColorChild%d", 2, 4);

}  // namespace

const PageDescription& NIMHomeScreenDockPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenDock",
        .domain = NimbraDomains::identifier(".homescreen"),
        .fixesColorRows = true,
        .rules = {
            when("hideDockBG", Condition::off()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 4), "topLevelSwitch")
                .nests({"enableCustomDockRadius", "oneColor", "fourColors"})
                .hiding(numbered("topLevelChild%d", 1, 4) + std::vector<std::string>{"customRadiusChild"} + kColors),
            when("dockType", Condition::equal(2)).editedBy("dockTypeParent").chain(numbered("dockTypeChild%d", 1, 4), "dockTypeParent")
                .nests({"enableCustomHomeScreenBottomInset"}),
            when("enableCustomDockRadius", Condition::on()).editedBy("topLevelChild2").chain({"customRadiusChild"}, "topLevelChild2"),
            when("enableCustomHomeScreenBottomInset", Condition::on()).editedBy("dockTypeChild4").chain({"customInsetChild"}, "dockTypeChild4"),
            when("dockBGColorMode", Condition::in({1, 2})).named("oneColor").editedBy("topLevelChild4")
                .chain({"bgColorChild1"}, "topLevelChild4").reloadRemovingWhen(Condition::equal(0)),
            when("dockBGColorMode", Condition::equal(2)).named("fourColors").editedBy("topLevelChild4")
                .chain(kLaterColors, "bgColorChild1").reloadRemovingWhen(Condition::in({0, 1})),
            when("enableCustomDockIconsScale", Condition::on()).editedBy("iconsScaleParent").chain({"iconsScaleChild"}, "iconsScaleParent"),
        },
    };
    return page;
}

void NIMHomeScreenDockPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key != "dockBGColorMode") {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    switch (value.integerValue()) {
    case 0:
        remove(kColors);
        break;
    case 1:
        remove(kLaterColors);
        if (!isShown("bgColorChild1"))
            insert("bgColorChild1", "topLevelChild4");
        break;
    case 2:
        if (!isShown("bgColorChild1"))
            insertChain(kColors, "topLevelChild4");
        break;
    default:
        break;
    }
}
