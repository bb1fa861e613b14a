#include "storage/NIMReset.h"

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "platform/HBPreferences.h"
#include "platform/NSFileManager.h"
#include "platform/NSRegularExpression.h"
#include "storage/NIMFileSweep.h"
#include "storage/NimbraDomains.h"

NIMDeletion clearDomain(std::string identifier)
{
    return {NIMDeletion::Kind::ClearDomain, std::move(identifier), {}};
}

NIMDeletion deleteFile(std::string path)
{
    return {NIMDeletion::Kind::DeleteFile, std::move(path), {}};
}

NIMDeletion sweep(std::string pattern, std::string folder)
{
    return {NIMDeletion::Kind::Sweep, std::move(folder), std::move(pattern)};
}

std::vector<NIMDeletion> operator+(std::vector<NIMDeletion> a, const std::vector<NIMDeletion>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

void removeFiles(const std::string& pattern, const std::string& folder)
{
    auto expression = NSRegularExpression::regularExpressionWithPattern(pattern, NSRegularExpression::CaseInsensitive);
    if (expression)
        NIMFileSweep::run(*expression, folder);
}

void performDeletions(const std::vector<NIMDeletion>& deletions)
{
    for (const NIMDeletion& deletion : deletions) {
        switch (deletion.kind) {
        case NIMDeletion::Kind::ClearDomain:
            HBPreferences::preferencesForIdentifier(deletion.target)->removeAllObjects();
            break;
        case NIMDeletion::Kind::DeleteFile:
            NSFileManager::defaultManager().removeItemAtPath(deletion.target);
            break;
        case NIMDeletion::Kind::Sweep:
            removeFiles(deletion.pattern, deletion.target);
            break;
        }
    }
}

PageAction confirmedReset(NIMReset reset)
{
    return [reset = std::move(reset)](NIMCollapsibleListController& page) {
        auto self = page.self<NIMCollapsibleListController>();
        auto alert = UIAlertController::alertControllerWithTitle("Nimbra", reset.message);
        alert->addAction({"Confirm", UIAlertActionStyle::Destructive, [self, reset] {
                              performDeletions(reset.deletions);
                              if (reset.then == NIMReset::Then::CloseApp) {
                                  self->performSelector("closeApp");
                              } else if (auto general = std::dynamic_pointer_cast<NIMGeneralListControllerWithRespringButton>(self)) {
                                  general->setHasPressedRespring(true);
                                  general->respring();
                              }
                          }});
        alert->addAction({"Cancel", UIAlertActionStyle::Cancel, nullptr});
        page.presentViewController(alert, true);
    };
}

NIMReset groupSettingsReset(const std::string& name, const std::string& suffix, std::vector<std::string> stores, bool clears)
{
    NIMReset reset{"Do you really want to reset " + name + " Settings?", {}};
    if (clears)
        reset.deletions.push_back(clearDomain(NimbraDomains::identifier(suffix)));
    reset.deletions.push_back(deleteFile(NimbraDomains::groupFile(suffix)));
    for (const std::string& store : stores)
        reset.deletions.push_back(deleteFile(NimbraDomains::groupFile(suffix, store)));
    return reset;
}

NIMReset groupColorsReset(const std::string& name, const std::string& suffix)
{
    return {"Do you really want to reset " + name + " Colors?", {deleteFile(NimbraDomains::groupFile(suffix, ".colors"))}};
}

NIMReset closingApp(NIMReset reset)
{
    reset.then = NIMReset::Then::CloseApp;
    return reset;
}
