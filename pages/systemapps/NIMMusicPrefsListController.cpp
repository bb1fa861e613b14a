// Music: the Music app's customisations behind their master switch (tint, recently added columns,
// the queue alert, the now playing view's dynamic colours and border), and the settings reset, which
// closes Music instead of respringing.
//
// The master switch re-applies the rules of its options; each does nothing when its first row is
// already shown.

#include "frame/NIMStockAppListController.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMMusicPrefsListController, "Music", "com.apple.Music");

const PageDescription& NIMMusicPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/Music",
        .domain = NimbraDomains::identifier(".music"),
        .rules = {
            when("musicAppEnabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 19), "topLevelSwitch")
                .nests({"enableMusicAppCustomTintColor", "enableMusicAppCustomRecentlyAddedColumnsNumber", "musicAppHideKeepOrClearAlert",
                        "enableMusicAppNowPlayingViewDynamicColors"}),
            when("enableMusicAppCustomTintColor", Condition::on()).editedBy("topLevelChild4").chain({"tintChild"}, "topLevelChild4")
                .guardedAlsoWhenNested(),
            when("enableMusicAppCustomRecentlyAddedColumnsNumber", Condition::on()).editedBy("topLevelChild7")
                .chain({"columnsChild"}, "topLevelChild7").guardedAlsoWhenNested(),
            when("musicAppHideKeepOrClearAlert", Condition::on()).editedBy("topLevelChild10").chain({"queueChild"}, "topLevelChild10")
                .guardedAlsoWhenNested(),
            when("enableMusicAppNowPlayingViewDynamicColors", Condition::on()).editedBy("topLevelChild19")
                .chain({"dynamicNowPlayingChild1", "dynamicNowPlayingChild2"}, "topLevelChild19")
                .nests({"addMusicAppNowPlayingViewBorderDynamicColor"}).guardedAlsoWhenNested(),
            when("addMusicAppNowPlayingViewBorderDynamicColor", Condition::on()).editedBy("dynamicNowPlayingChild2")
                .chain({"borderWidthChild1", "borderWidthChild2"}, "dynamicNowPlayingChild2"),
        },
        .actions = {
            {"resetSettings", confirmedReset(closingApp(groupSettingsReset("Music", ".music", {})))},
        },
    };
    return page;
}
