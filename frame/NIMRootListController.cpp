#include "frame/NIMRootListController.h"

#include "frame/NIMAppearanceSettings.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMRootHeaderView.h"
#include "frame/SharedActions.h"
#include "platform/Process.h"
#include "platform/UIAppearance.h"
#include "storage/NimbraDomains.h"

NIM_REGISTER_PAGE(NIMRootListController, NIMGeneralListControllerWithRespringButton);

namespace {

constexpr double kTitleOffset = 40;
constexpr double kTitleFade = 0.2;
constexpr double kBlurFade = 0.4;

}  // namespace

const PageDescription& NIMRootListController::description()
{
    static const PageDescription page{
        .definition = "Root",
        .domain = NimbraDomains::base(),
        .rules = {
            when("nimbraEnabled", Condition::on()).chain(numbered("topLevelChild%d", 1, 30), "topLevelSwitch"),
        },
    };
    return page;
}

void NIMRootListController::init()
{
    NIMGeneralListControllerWithRespringButton::init();
    hb_setAppearanceSettings(std::make_shared<NIMAppearanceSettings>());
    UIAppearance::labelWhenContainedIn("HBLinkTableCell").numberOfLines = 0;
    NimbraColorPickers::selectColorPicker();

    navigationItem().titleView = std::make_shared<UIView>("titleView");
    auto label = std::make_shared<UILabel>(std::string("Nimbra ") + kVersion);
    label->fontSize = 12;
    label->bold = true;
    label->textColor = UIColor::whiteColor();
    label->centered = true;
    auto icon = std::make_shared<UIImageView>("icons/NIMRootIcon");
    icon->aspectFit = true;
    _stackView = std::make_shared<UIStackView>("titleStack");
    _stackView->vertical = true;
    _stackView->spacing = 2.0;
    _stackView->setAlpha(0.0);
    _stackView->addArrangedSubview(icon);
    _stackView->addArrangedSubview(label);
    _stackView->setTranslation(0, kTitleOffset);
    navigationItem().titleView->addSubview(_stackView);
    _stackView->setFrame(navigationItem().titleView->bounds());

    addAction("email", [this] { email(); });
}

void NIMRootListController::viewWillAppear(bool animated)
{
    NIMGeneralListControllerWithRespringButton::viewWillAppear(animated);
    auto page = view();
    if (auto previous = _appearanceBlur.lock())
        previous->removeFromSuperview();
    auto blur = std::make_shared<UIVisualEffectView>(UIBlurEffectStyle::Regular, page->bounds());
    _appearanceBlur = blur;
    blur->setAlpha(1.0);
    Process::current().global<NimbraBlur>().view = blur;
    page->addSubview(blur);
    UIView::animateWithDuration(kBlurFade, 0, [blur] { blur->setAlpha(0.0); });
}

void NIMRootListController::scrollViewDidScroll(UIScrollView& scrollView)
{
    double y = scrollView.contentOffsetY();
    double threshold = 0.75 * NIMRootHeaderView::headerH();
    bool& titleShown = Process::current().global<NIMRootTitleState>().titleShown;
    auto stack = _stackView;
    if (y > threshold && !titleShown) {
        stack->setAlpha(0.0);
        stack->setTranslation(0, kTitleOffset);
        UIView::animateWithDuration(kTitleFade, 0, [stack] {
            stack->setAlpha(1.0);
            stack->setTranslation(0, 0);
        });
        titleShown = true;
    } else if (y <= threshold && titleShown) {
        stack->setAlpha(1.0);
        stack->setTranslation(0, 0);
        UIView::animateWithDuration(kTitleFade, 0, [stack] {
            stack->setAlpha(0.0);
            stack->setTranslation(0, kTitleOffset);
        });
        titleShown = false;
    }
}

void NIMRootListController::email()
{
    auto composer = HBSupportController::supportViewControllerForBundle("Nimbra", kVersion, "", kSupportAddress);
    composer->appearanceSettings = hb_appearanceSettings();
    composer->overrideUserInterfaceStyle = overrideUserInterfaceStyle();
    composer->mailComposeDelegate = std::dynamic_pointer_cast<MFMailComposeViewControllerDelegate>(shared_from_this());
    if (auto navigation = realNavigationController())
        navigation->presentViewController(composer, false);
}

void NIMRootListController::mailComposeControllerDidFinishWithResult(MFMailComposeViewController& controller, Result result)
{
    (void)controller;
    (void)result;
    dismissViewControllerAnimated(true);
    auto navigation = navigationController();
    if (navigation && navigation->viewControllers().size() != 1) {
        realNavigationController()->popViewControllerAnimated(true);
        return;
    }
    dismissViewControllerAnimated(false);
}
