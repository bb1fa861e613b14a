#pragma once
// The bundle's first page. It installs the colour scheme, chooses the colour-picker library for
// the process, hides every group link while the master switch "nimbraEnabled" is off, shows the
// product icon and version in the navigation bar once the header has scrolled away, fades in from
// a blur each time it appears, and offers an e-mail to support.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "platform/HBSupportController.h"

class NIMRootListController : public NIMGeneralListControllerWithRespringButton, public MFMailComposeViewControllerDelegate {
public:
    /// The version shown in the title.
    static constexpr const char* kVersion = "1.2";
    /// The maker's support address.
    static constexpr const char* kSupportAddress = "support@veltram.com";

    NIMRootListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

    void init() override;
    void viewWillAppear(bool animated) override;
    void scrollViewDidScroll(UIScrollView& scrollView) override;

    /// Composes an e-mail to support.
    void email();
    void mailComposeControllerDidFinishWithResult(MFMailComposeViewController& controller, Result result) override;

    /// The icon and version label in the navigation bar's title view.
    const std::shared_ptr<UIStackView>& stackView() const { return _stackView; }

private:
    std::shared_ptr<UIStackView> _stackView;
    /// The blur of the last appearance: faded out and left in place until the next appearance
    /// brings its own, so that a page shown again and again keeps one.
    std::weak_ptr<UIVisualEffectView> _appearanceBlur;
};
