// Control Center > Toggles: colouring of Control Center's toggles: background, icon and border
// colours, one set for every toggle (in dark and light mode) or each toggle's own (on the per-toggle
// pages).
//
// What is shown follows six rules, which the reload applies in order. A change shows or hides rows
// until the page shows what the reload would leave; each row it shows goes after the nearest row
// before it (in the page's order) that is shown. Switching colouring on tests the background style
// for 2 and the icon style for 1 exactly, where everything else tests "at least".

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

#include <algorithm>

class NIMControlCenterTogglesPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMControlCenterTogglesPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
    void prune(HBPreferences& preferences) override;

private:
    struct Categories {
        bool background, icons, border;
        std::int64_t mode;
    };
    /// The governed rows a state shows, in the page's order.
    static std::vector<std::string> rowsFor(const Categories& state);
    /// Hides what the state does not show, then shows what it does, each row after the nearest shown row before it.
    void showOnly(const std::vector<std::string>& rows);
};

NIM_REGISTER_PAGE(NIMControlCenterTogglesPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kTopLevel = numbered("topLevelChild%d", 1, 6);
const std::vector<std::string> kSeparate = numbered("separateColorsChild%d", 1, 4);

std::vector<std::string> modeRows(const std::string& mode, const char* category)
{
    return {"allColorsChild" + mode + category + "1", "allColorsChild" + mode + category + "2"};
}

std::vector<std::string> allColors(const char* category)
{
    return modeRows("LightMode", category) + modeRows("DarkMode", category);
}

/// Every governed row, in the page's order: the anchors of the placement rule.
const std::vector<std::string>& pageOrder()
{
    static const std::vector<std::string> order = [] {
        std::vector<std::string> rows = kTopLevel + std::vector<std::string>{"borderChild1", "borderChild2", "setAllOrSeparChild1",
                                                                            "setAllOrSeparChild2"} + kSeparate;
        for (const char* mode : {"LightMode", "DarkMode"}) {
            rows.push_back(std::string("allColorsChild") + mode);
            for (const char* category : {"BG", "Icons", "Border"})
                rows = rows + modeRows(mode, category);
        }
        return rows;
    }();
    return order;
}

const std::vector<std::string> kAllColors(pageOrder().end() - 14, pageOrder().end());

/// What switching colouring off removes, in this order.
const std::vector<std::string> kEverything =
    kTopLevel + kSeparate + std::vector<std::string>{"borderChild1", "borderChild2", "setAllOrSeparChild1", "setAllOrSeparChild2"} + kAllColors;

}  // namespace

const PageDescription& NIMControlCenterTogglesPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterToggles",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
        .rules = {
            when("enableTogglesColorization", Condition::on()).editedBy("topLevelSwitch").chain(kTopLevel, "topLevelSwitch").notReloaded(),
            when("togglesBackgroundColorStyle", Condition::atLeast(2)).editedBy("topLevelChild2")
                .chain(modeRows("LightMode", "BG"), "allColorsChildLightMode").chain(modeRows("DarkMode", "BG"), "allColorsChildDarkMode")
                .notReloaded(),
            when("togglesIconColorStyle", Condition::atLeast(1)).editedBy("topLevelChild4")
                .chain(modeRows("LightMode", "Icons"), "allColorsChildLightMode").chain(modeRows("DarkMode", "Icons"), "allColorsChildDarkMode")
                .notReloaded(),
            when("enableTogglesBorder", Condition::on()).editedBy("topLevelChild6").chain({"borderChild1", "borderChild2"}, "topLevelChild6")
                .chain(modeRows("LightMode", "Border"), "allColorsChildLightMode").chain(modeRows("DarkMode", "Border"), "allColorsChildDarkMode")
                .notReloaded(),
            when("togglesColorsMode", Condition::atMost(1)).named("allColors").editedBy("setAllOrSeparChild2")
                .chain({"allColorsChildLightMode"}, "setAllOrSeparChild2").chain({"allColorsChildDarkMode"}, "allColorsChildLightMode")
                .notReloaded(),
            when("togglesColorsMode", Condition::atLeast(2)).named("separateColors").editedBy("setAllOrSeparChild2")
                .chain(kSeparate, "setAllOrSeparChild2").notReloaded(),
            when("togglesBackgroundColorStyle", Condition::atLeast(2)).named("chooser")
                .chain({"setAllOrSeparChild1", "setAllOrSeparChild2"}, "topLevelChild6").notReloaded(),
        },
        .captured = pageOrder(),
    };
    return page;
}

std::vector<std::string> NIMControlCenterTogglesPrefsListController::rowsFor(const Categories& state)
{
    bool chooser = state.background || state.icons;
    bool single = state.mode <= 1;
    std::vector<std::string> rows;
    for (const std::string& id : pageOrder()) {
        bool shown = true;
        if (id.starts_with("borderChild"))
            shown = state.border;
        else if (id.starts_with("setAllOrSepar"))
            shown = chooser;
        else if (id.starts_with("separateColors"))
            shown = !single;
        else if (id == "allColorsChildLightMode" || id == "allColorsChildDarkMode")
            shown = chooser && single;
        else if (id.find("BG") != std::string::npos)
            shown = state.background && single;
        else if (id.find("Icons") != std::string::npos)
            shown = state.icons && single;
        else if (id.find("Border") != std::string::npos)
            shown = state.border && single;
        if (shown)
            rows.push_back(id);
    }
    return rows;
}

void NIMControlCenterTogglesPrefsListController::showOnly(const std::vector<std::string>& rows)
{
    auto wanted = [&](const std::string& id) { return std::find(rows.begin(), rows.end(), id) != rows.end(); };
    for (const std::string& id : pageOrder())
        if (!wanted(id))
            remove({id});
    std::string anchor = "topLevelSwitch";
    for (const std::string& id : pageOrder()) {
        if (wanted(id) && !isShown(id))
            insert(id, anchor);
        if (isShown(id))
            anchor = id;
    }
}

void NIMControlCenterTogglesPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    auto integer = [&](const char* row, const char* rowKey) {
        return key == rowKey ? value.integerValue() : valueOfRow(row).integerValue();
    };
    auto boolean = [&](const char* row, const char* rowKey) { return key == rowKey ? value.boolValue() : valueOfRow(row).boolValue(); };
    if (key == "enableTogglesColorization") {
        if (!value.boolValue()) {
            remove(kEverything);
            return;
        }
        if (isShown("topLevelChild1"))
            return;
        showOnly(rowsFor({integer("topLevelChild2", "") == 2, integer("topLevelChild4", "") == 1, boolean("topLevelChild6", ""),
                          integer("setAllOrSeparChild2", "")}));
        return;
    }
    if (key != "togglesBackgroundColorStyle" && key != "togglesIconColorStyle" && key != "enableTogglesBorder" && key != "togglesColorsMode")
        return;
    if (!isShown("topLevelChild1"))
        return;
    showOnly(rowsFor({integer("topLevelChild2", "togglesBackgroundColorStyle") >= 2, integer("topLevelChild4", "togglesIconColorStyle") >= 1,
                      boolean("topLevelChild6", "enableTogglesBorder"), integer("setAllOrSeparChild2", "togglesColorsMode")}));
}

void NIMControlCenterTogglesPrefsListController::prune(HBPreferences& preferences)
{
    std::int64_t background = preferences.integerForKey("togglesBackgroundColorStyle");
    std::int64_t icons = preferences.integerForKey("togglesIconColorStyle");
    std::int64_t mode = preferences.integerForKey("togglesColorsMode");
    if (!preferences.boolForKey("enableTogglesColorization"))
        remove(kEverything, false);
    if (background <= 1 && icons <= 0)
        remove({"setAllOrSeparChild1", "setAllOrSeparChild2", "allColorsChildLightMode", "allColorsChildDarkMode"}, false);
    if (background <= 1)
        remove(allColors("BG"), false);
    if (icons <= 0)
        remove(allColors("Icons"), false);
    if (!preferences.boolForKey("enableTogglesBorder"))
        remove(std::vector<std::string>{"borderChild1", "borderChild2"} + allColors("Border"), false);
    remove(mode <= 1 ? kSeparate : kAllColors, false);
}
