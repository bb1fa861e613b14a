// Home Screen > Layout: rows and columns of the home screen, folders and dock, behind the custom
// layout switch.
//
// Unlike every other reload of the group, the reload animates the removals of the five value rows.
// From iOS 14 the home screen's own row and column controls do not apply: the reload greys out
// both switches and both values, the value hook only the values (of the rows shown).

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "platform/Process.h"
#include "storage/NimbraDomains.h"

class NIMHomeScreenLayoutPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMHomeScreenLayoutPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
    void prune(HBPreferences& preferences) override;

private:
    void disableFromIOS14(std::initializer_list<const char*> ids);
};

NIM_REGISTER_PAGE(NIMHomeScreenLayoutPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

CollapsibleGroupRule value(const char* key, const char* parent, const char* child)
{
    return when(key, Condition::on()).editedBy(parent).chain({child}, parent).reloadAnimating();
}

}  // namespace

const PageDescription& NIMHomeScreenLayoutPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenLayout",
        .domain = NimbraDomains::identifier(".homescreen"),
        .rules = {
            when("customHomeScreenLayoutEnabled", Condition::on()).editedBy("topLevelSwitch")
                .chain({"topLevelChild1", "homeScreenRowsParent", "homeScreenColumnsParent", "topLevelChild2", "folderRowsParent",
                        "folderColumnsParent", "topLevelChild3", "dockParent"},
                       "topLevelSwitch")
                .nests({"customHomeScreenRowsEnabled", "customHomeScreenColumnsEnabled", "customFolderRowsEnabled",
                        "customFolderColumnsEnabled", "customDockColumnsEnabled"})
                .hiding({"topLevelChild1", "homeScreenRowsParent", "homeScreenRowsChild", "homeScreenColumnsParent",
                         "homeScreenColumnsChild", "topLevelChild2", "folderRowsParent", "folderRowsChild", "folderColumnsParent",
                         "folderColumnsChild", "topLevelChild3", "dockParent", "dockChild"}),
            value("customHomeScreenRowsEnabled", "homeScreenRowsParent", "homeScreenRowsChild"),
            value("customHomeScreenColumnsEnabled", "homeScreenColumnsParent", "homeScreenColumnsChild"),
            value("customFolderRowsEnabled", "folderRowsParent", "folderRowsChild"),
            value("customFolderColumnsEnabled", "folderColumnsParent", "folderColumnsChild"),
            value("customDockColumnsEnabled", "dockParent", "dockChild"),
        },
    };
    return page;
}

void NIMHomeScreenLayoutPrefsListController::disableFromIOS14(std::initializer_list<const char*> ids)
{
    if (Process::current().coreFoundationVersion() < 1740.0)
        return;
    for (const char* id : ids)
        if (auto row = specifierForID(id))
            row->setProperty(PlistValue(false), "enabled");
}

void NIMHomeScreenLayoutPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
    disableFromIOS14({"homeScreenRowsChild", "homeScreenColumnsChild"});
}

void NIMHomeScreenLayoutPrefsListController::prune(HBPreferences& preferences)
{
    NIMGeneralListControllerWithRespringButton::prune(preferences);
    disableFromIOS14({"homeScreenRowsParent", "homeScreenRowsChild", "homeScreenColumnsParent", "homeScreenColumnsChild"});
}
