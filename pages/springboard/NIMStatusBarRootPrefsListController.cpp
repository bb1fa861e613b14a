// Status Bar: the group's master switch over its options, the recording indicator and its colours,
// links to the indicator colours, hidden indicators, time and battery pages, and the group's resets,
// which also cover the battery indicator and the time labels.
//
// Before iOS 14 the recording indicator does not exist: its rows are shown greyed out.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "platform/Process.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

class NIMStatusBarRootPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMStatusBarRootPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void prune(HBPreferences& preferences) override;
};

NIM_REGISTER_PAGE(NIMStatusBarRootPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

constexpr double kIOS14 = 1740.0;

}  // namespace

const PageDescription& NIMStatusBarRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/StatusBarRoot",
        .domain = NimbraDomains::identifier(".statusbar"),
        .fixesColorRows = true,
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 19), "topLevelSwitch")
                .nests({"hideRecordingIndicator"}),
            when("hideRecordingIndicator", Condition::off()).editedBy("topLevelChild15")
                .chain({"topLevelChild15Child"}, "topLevelChild15").nests({"enableRecordingIndicatorCustomColors"}),
            when("enableRecordingIndicatorCustomColors", Condition::on()).editedBy("topLevelChild15Child")
                .chain({"topLevelChild15GrandChild1", "topLevelChild15GrandChild2"}, "topLevelChild15Child"),
        },
        .actions = {
            {"resetSettings", confirmedReset({"Do you really want to reset Status Bar Settings?",
                                              {deleteFile(NimbraDomains::groupFile(".statusbar")),
                                               deleteFile(NimbraDomains::groupFile(".battery")),
                                               deleteFile(NimbraDomains::groupFile(".battery", ".gestureApps")),
                                               deleteFile(NimbraDomains::groupFile(".time")),
                                               deleteFile(NimbraDomains::groupFile(".time", ".gestureApps"))}})},
            {"resetColors", confirmedReset({"Do you really want to reset Status Bar Colors?",
                                            {deleteFile(NimbraDomains::groupFile(".statusbar", ".colors")),
                                             deleteFile(NimbraDomains::groupFile(".battery", ".colors")),
                                             deleteFile(NimbraDomains::groupFile(".time", ".colors"))}})},
        },
    };
    return page;
}

void NIMStatusBarRootPrefsListController::prune(HBPreferences& preferences)
{
    NIMGeneralListControllerWithRespringButton::prune(preferences);
    if (Process::current().coreFoundationVersion() >= kIOS14)
        return;
    for (const char* id : {"topLevelChild15", "topLevelChild15Child"}) {
        if (auto row = specifierForID(id)) {
            row->setProperty(PlistValue(false), "enabled");
            reloadSpecifier(row);
        }
    }
}
