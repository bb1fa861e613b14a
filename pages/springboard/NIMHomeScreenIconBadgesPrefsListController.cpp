// Home Screen > Icon Badges: the badges, their scale and their colours (background, border and,
// while the number is shown, the number's).
//
// "colorsChild7" and "colorsChild8" are removed with the colours but never put back by a change:
// they return only when the page is rebuilt; kept as it is.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

class NIMHomeScreenIconBadgesPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMHomeScreenIconBadgesPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
};

NIM_REGISTER_PAGE(NIMHomeScreenIconBadgesPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kColorTypes{"colorsChild2Child", "colorsChild4Child", "colorsChild6Child"};

CollapsibleGroupRule colorType(const char* key, const char* row)
{
    return when(key, Condition::equal(2)).editedBy(row).chain({std::string(row) + "Child"}, row);
}

}  // namespace

const PageDescription& NIMHomeScreenIconBadgesPrefsListController::description()
{
    const auto colors = numbered("colorsChild%d", 1, 8) + kColorTypes;
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenIconBadges",
        .domain = NimbraDomains::identifier(".homescreen"),
        .fixesColorRows = true,
        .rules = {
            when("hideAppBadges", Condition::off()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 6), "topLevelSwitch")
                .nests({"enableCustomBadgeScale", "enableBadgesColorization"})
                .hiding(numbered("topLevelChild%d", 1, 6) + std::vector<std::string>{"badgeScaleChild"} + colors),
            when("hideBadgeNumber", Condition::off()).editedBy("topLevelChild2").chain({"colorsChild5", "colorsChild6"}, "colorsChild4")
                .onlyWhenRow("topLevelChild6", Condition::on()).nests({"badgesNumberColorType"})
                .hiding({"colorsChild5", "colorsChild6", "colorsChild6Child"}),
            when("enableCustomBadgeScale", Condition::on()).editedBy("topLevelChild4").chain({"badgeScaleChild"}, "topLevelChild4"),
            when("enableBadgesColorization", Condition::on()).editedBy("topLevelChild6").chain(numbered("colorsChild%d", 1, 4), "topLevelChild6")
                .nests({"hideBadgeNumber", "badgesBGColorType", "badgesBorderColorType"})
                .hiding(colors),
            colorType("badgesBGColorType", "colorsChild2"),
            colorType("badgesBorderColorType", "colorsChild4"),
            colorType("badgesNumberColorType", "colorsChild6"),
        },
        .captured = numbered("topLevelChild%d", 1, 6) + std::vector<std::string>{"badgeScaleChild"} + colors,
    };
    return page;
}

void NIMHomeScreenIconBadgesPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key != "hideBadgeNumber" || value.boolValue()) {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    // The number's colours follow the border colour's custom row when that one is shown.
    if (isShown("colorsChild5") || !valueOfRow("topLevelChild6").boolValue())
        return;
    insert("colorsChild5", valueOfRow("colorsChild4").integerValue() == 2 ? "colorsChild4Child" : "colorsChild4");
    insert("colorsChild6", "colorsChild5");
    if (valueOfRow("colorsChild6").integerValue() == 2)
        insert("colorsChild6Child", "colorsChild6");
}
