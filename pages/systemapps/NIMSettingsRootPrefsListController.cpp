// Settings: the Settings app's customisations behind their master switch (title, search bar, drag
// action, first and last name, icons), links to its pages, and the settings reset, which closes
// Settings instead of respringing.
//
// Switching the group off removes every nested row, while the reload leaves the first- and
// last-name rows to their own switches; kept as it is.
//
// The master switch re-applies the rules of its options; each does nothing when its first row is
// already shown.

#include "frame/NIMStockAppListController.h"
#include "frame/PageActions.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMSettingsRootPrefsListController, "Settings", "com.apple.Preferences");

const PageDescription& NIMSettingsRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/SettingsRoot",
        .domain = NimbraDomains::identifier(".settings"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 24), "topLevelSwitch")
                .nests({"enableCustomTitle", "hideSearchBar", "enableCustomDragAction", "enableCustomFirstName", "enableCustomLastName",
                        "hideIcons"})
                .reloadHiding(numbered("topLevelChild%d", 1, 24) +
                              std::vector<std::string>{"titleChild1", "titleChild2", "searchBarChild", "iconsChild1", "iconsChild2",
                                                       "dragActionChild1", "dragActionChild2"}),
            when("enableCustomTitle", Condition::on()).editedBy("topLevelChild8").chain({"titleChild1", "titleChild2"}, "topLevelChild8")
                .guardedAlsoWhenNested(),
            when("hideSearchBar", Condition::off()).editedBy("topLevelChild10").chain({"searchBarChild"}, "topLevelChild10")
                .guardedAlsoWhenNested(),
            when("enableCustomDragAction", Condition::on()).editedBy("topLevelChild12")
                .chain({"dragActionChild1", "dragActionChild2"}, "topLevelChild12").guardedAlsoWhenNested(),
            when("enableCustomFirstName", Condition::on()).editedBy("topLevelChild14").chain({"firstNameChild"}, "topLevelChild14")
                .guardedAlsoWhenNested(),
            when("enableCustomLastName", Condition::on()).editedBy("topLevelChild15").chain({"lastNameChild"}, "topLevelChild15")
                .guardedAlsoWhenNested(),
            when("hideIcons", Condition::off()).editedBy("topLevelChild22").chain({"iconsChild1", "iconsChild2"}, "topLevelChild22")
                .guardedAlsoWhenNested(),
        },
        .actions = {
            {"saveTextCell:", PageActions::saveTextCell()},
            {"resetSettings", confirmedReset(closingApp(groupSettingsReset("Settings App", ".settings", {})))},
        },
    };
    return page;
}
