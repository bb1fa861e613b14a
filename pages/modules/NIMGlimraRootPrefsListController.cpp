// Glimra: the edge lighting's master switch over its options, colours adapted to notifications,
// and up to four colours of its own, with the group's resets.
//
// The colour mode is tested two ways, on purpose: switching the module on shows one colour row from
// mode 1 and all four from mode 2 (so a stored 3 shows four), while choosing a mode on the page
// reacts only to 0, 1 and 2.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

class NIMGlimraRootPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMGlimraRootPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
};

NIM_REGISTER_PAGE(NIMGlimraRootPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kLaterColors = numbered("colorChild%d", 2, 4);

}  // namespace

const PageDescription& NIMGlimraRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/GlimraRoot",
        .domain = NimbraDomains::identifier(".glimra"),
        .fixesColorRows = true,
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 12), "topLevelSwitch")
                .nests({"adaptColorsToNotifications", "oneColor", "fourColors"}),
            when("adaptColorsToNotifications", Condition::on()).editedBy("topLevelChild6")
                .chain(numbered("notificationsChild%d", 1, 4), "topLevelChild6"),
            when("colorsType", Condition::atLeast(1)).named("oneColor").editedBy("topLevelChild8")
                .chain({"colorChild1"}, "topLevelChild8").reloadRemovingWhen(Condition::equal(0)),
            when("colorsType", Condition::atLeast(2)).named("fourColors").editedBy("topLevelChild8")
                .chain(kLaterColors, "colorChild1").reloadRemovingWhen(Condition::in({0, 1})),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Glimra", ".glimra", {".blackListedApps"}))},
            {"resetColors", confirmedReset(groupColorsReset("Glimra", ".glimra"))},
        },
    };
    return page;
}

void NIMGlimraRootPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key != "colorsType") {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    switch (value.integerValue()) {
    case 0:
        remove(numbered("colorChild%d", 1, 4));
        break;
    case 1:
        remove(kLaterColors);
        if (!isShown("colorChild1"))
            insert("colorChild1", "topLevelChild8");
        break;
    case 2:
        if (!isShown("colorChild1"))
            insert("colorChild1", "topLevelChild8");
        if (!isShown("colorChild2"))
            insertChain(kLaterColors, "colorChild1");
        break;
    default:
        break;
    }
}
