#include "platform/HBSupportController.h"

#include "platform/Events.h"
#include "platform/Process.h"

#include <sstream>

NIM_REGISTER_CLASS(MFMailComposeViewController, UIViewController);

void MFMailComposeViewController::finish(MFMailComposeViewControllerDelegate::Result result)
{
    auto keepAlive = shared_from_this();
    if (auto delegate = mailComposeDelegate.lock())
        delegate->mailComposeControllerDidFinishWithResult(*this, result);
}

namespace HBSupportController {

std::shared_ptr<MFMailComposeViewController> supportViewControllerForBundle(const std::string& bundleName,
                                                                           const std::string& version,
                                                                           const std::string& preferencesIdentifier,
                                                                           const std::string& email)
{
    Process& process = Process::current();
    auto composer = NSObject::make<MFMailComposeViewController>();
    composer->toRecipients = {email};
    composer->subject = bundleName + " " + version + " Support";
    std::ostringstream body;
    body << "\n\n---\nPackage: " << bundleName << " " << version << "\nSystem: Core Foundation "
         << process.coreFoundationVersion() << "\nHost: " << process.mainBundleIdentifier() << "\n";
    if (!preferencesIdentifier.empty())
        body << "Preferences: " << preferencesIdentifier << "\n";
    composer->body = body.str();
    process.events().record(Events::Compose{composer->toRecipients, composer->subject, composer->body});
    return composer;
}

}  // namespace HBSupportController
