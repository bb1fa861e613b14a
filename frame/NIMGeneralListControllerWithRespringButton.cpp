#include "frame/NIMGeneralListControllerWithRespringButton.h"

#include "frame/SharedActions.h"
#include "platform/Process.h"
#include "platform/UIAppearance.h"

NIM_REGISTER_ABSTRACT_CLASS(NIMGeneralListControllerWithRespringButton, NIMCollapsibleListController);

namespace {

const UIColor kArmedTint{231 / 255.0, 76 / 255.0, 60 / 255.0, 1.0};
constexpr double kRevertDelay = 3.0;

}  // namespace

void NIMGeneralListControllerWithRespringButton::init()
{
    NIMCollapsibleListController::init();
    _respringButton = NSObject::make<UIBarButtonItem>("Respring", weak_from_this(), "respring");
    _respringButton->setTintColor(UIColor::whiteColor());
    navigationItem().rightBarButtonItem = _respringButton;
    auto& segmentLabels = UIAppearance::labelWhenContainedIn("UISegmentedControl");
    segmentLabels.numberOfLines = 0;
    segmentLabels.minimumScaleFactor = 0.7;
    _hasPressedRespring = false;
    addAction("respring", [this] { respring(); });
}

void NIMGeneralListControllerWithRespringButton::viewDidLoad()
{
    table()->setKeyboardDismissMode(1);
    NIMCollapsibleListController::viewDidLoad();
}

void NIMGeneralListControllerWithRespringButton::respring()
{
    if (!_hasPressedRespring) {
        _respringButton->setTitle("Sure?");
        _respringButton->setTintColor(kArmedTint);
        _hasPressedRespring = true;
        auto page = self<NIMGeneralListControllerWithRespringButton>();
        Process::current().mainQueue().dispatchAfter(kRevertDelay, [page] {
            page->_respringButton->setTitle("Respring");
            page->_respringButton->setTintColor(UIColor::whiteColor());
            page->_hasPressedRespring = false;
        });
        return;
    }
    ::respring(*view());
}
