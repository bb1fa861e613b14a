// Home Screen > Icon Labels: hiding app and widget labels, and the labels' text and background
// colours, which apply while any label is shown.
//
// Two switches govern one block of rows: it is hidden only while both app and widget labels are.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

class NIMHomeScreenIconLabelsPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMHomeScreenIconLabelsPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
    void prune(HBPreferences& preferences) override;
};

NIM_REGISTER_PAGE(NIMHomeScreenIconLabelsPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

CollapsibleGroupRule labelBlock(const char* key, const char* row)
{
    return when(key, Condition::off()).editedBy(row).chain(numbered("topLevelChild%d", 1, 4), "topLevelSwitch")
        .nests({"customTextColorEnable", "customBgTextColorEnable"})
        .hiding(numbered("topLevelChild%d", 1, 4) + std::vector<std::string>{"customTextColorChild", "customBGColorChild"})
        .notReloaded();
}

}  // namespace

const PageDescription& NIMHomeScreenIconLabelsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenIconLabels",
        .domain = NimbraDomains::identifier(".homescreen"),
        .fixesColorRows = true,
        .rules = {
            labelBlock("hideAppLabels", "topLevelSwitch1"),
            labelBlock("hideWidgetLabels", "topLevelSwitch2"),
            when("customTextColorEnable", Condition::on()).editedBy("topLevelChild2").chain({"customTextColorChild"}, "topLevelChild2"),
            when("customBgTextColorEnable", Condition::on()).editedBy("topLevelChild4").chain({"customBGColorChild"}, "topLevelChild4"),
        },
        .captured = numbered("topLevelChild%d", 1, 4) +
                    std::vector<std::string>{"customTextColorChild", "customBGColorChild", "topLevelSwitch1", "topLevelSwitch2"},
    };
    return page;
}

void NIMHomeScreenIconLabelsPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    const char* other = key == "hideAppLabels" ? "topLevelSwitch2" : key == "hideWidgetLabels" ? "topLevelSwitch1" : nullptr;
    if (!other) {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    if (!value.boolValue())
        show(rule(key));
    else if (valueOfRow(other).boolValue())
        hide(rule(key));
}

void NIMHomeScreenIconLabelsPrefsListController::prune(HBPreferences& preferences)
{
    if (preferences.boolForKey("hideAppLabels") && preferences.boolForKey("hideWidgetLabels"))
        hide(rule("hideAppLabels"), false);
    NIMGeneralListControllerWithRespringButton::prune(preferences);
}
