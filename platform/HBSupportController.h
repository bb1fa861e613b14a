#pragma once
// Cephei's HBSupportController: a mail composer addressed to a package's support address. Nothing is
// sent; composing records {"event":"compose","to":[...],"subject":...,"body":...}, the message the
// user would see. The composer reports how it ended to its delegate (a host's `cancel`).

#include "platform/Cephei.h"

#include <string>
#include <vector>

class MFMailComposeViewController;

class MFMailComposeViewControllerDelegate {
public:
    enum class Result { Cancelled = 0, Saved = 1, Sent = 2, Failed = 3 };
    virtual ~MFMailComposeViewControllerDelegate() = default;
    virtual void mailComposeControllerDidFinishWithResult(MFMailComposeViewController& controller, Result result) = 0;
};

class MFMailComposeViewController : public UIViewController {
public:
    std::vector<std::string> toRecipients;
    std::string subject;
    std::string body;
    std::weak_ptr<MFMailComposeViewControllerDelegate> mailComposeDelegate;
    std::shared_ptr<HBAppearanceSettings> appearanceSettings;
    int overrideUserInterfaceStyle = 0;

    /// The user leaves the composer.
    void finish(MFMailComposeViewControllerDelegate::Result result);
};

namespace HBSupportController {

/// supportViewControllerForBundle:preferencesIdentifier:sendToEmail: for the named bundle (its
/// name and version go into the subject and body).
std::shared_ptr<MFMailComposeViewController> supportViewControllerForBundle(const std::string& bundleName,
                                                                           const std::string& version,
                                                                           const std::string& preferencesIdentifier,
                                                                           const std::string& email);

}  // namespace HBSupportController
