#include "storage/NIMNimbraSettingsPrefsListController.h"

#include "frame/NIMPageCatalog.h"
#include "frame/SharedActions.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_REGISTER_PAGE(NIMNimbraSettingsPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

std::vector<NIMDeletion> clearEveryDomain()
{
    std::vector<NIMDeletion> deletions;
    for (const std::string& suffix : NimbraDomains::maintenanceSuffixes())
        deletions.push_back(clearDomain(NimbraDomains::identifier(suffix)));
    return deletions;
}

std::vector<NIMDeletion> deleteColorCaches()
{
    return {deleteFile(NimbraDomains::appIconColorsCache()), deleteFile(NimbraDomains::springboardAlbumColorsCache()),
            deleteFile(NimbraDomains::musicAppAlbumColorsCache())};
}

}  // namespace

const PageDescription& NIMNimbraSettingsPrefsListController::description()
{
    const std::string preferences = NimbraDomains::preferencesDirectory();
    static const PageDescription page{
        .definition = "NimbraSettings",
        .domain = NimbraDomains::base(),
        .actions = {
            {"resetAll", confirmedReset({"Do you really want to reset all settings and colors?",
                                         clearEveryDomain() + std::vector{sweep("veltram.nimbraprefs", preferences)} +
                                             deleteColorCaches()})},
            {"resetSettings", confirmedReset({"Do you really want to reset all settings?",
                                              clearEveryDomain() +
                                                  std::vector{deleteFile(NimbraDomains::file(NimbraDomains::base())),
                                                              sweep("veltram.nimbraprefs.w+.(?!colors)", preferences)} +
                                                  deleteColorCaches()})},
            {"resetColors", confirmedReset({"Do you really want to reset all colors?",
                                            std::vector{sweep("veltram.nimbraprefs.w+.colors.plist", preferences)} +
                                                deleteColorCaches()})},
            {"clearIconColorsCache", confirmedReset({"Do you really want to clear icon colors cache?",
                                                     {deleteFile(NimbraDomains::appIconColorsCache())}})},
            {"clearAlbumColorsCache", confirmedReset({"Do you really want to clear album colors cache?",
                                                      {deleteFile(NimbraDomains::springboardAlbumColorsCache()),
                                                       deleteFile(NimbraDomains::musicAppAlbumColorsCache())}})},
        },
    };
    return page;
}

void NIMNimbraSettingsPrefsListController::removeFiles(const std::string& pattern, const std::string& folder)
{
    ::removeFiles(pattern, folder);
}

void NIMNimbraSettingsPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key == "selectedColorPicker")
        NimbraColorPickers::choose(value.integerValue());
}
