#pragma once
// The base of almost every page: the collapsible-group lifecycle plus a two-tap "Respring" button
// in the navigation bar.
//
// Button states: Idle ("Respring", white) -> first tap -> Armed ("Sure?", red 231/76/60) -> a second
// tap while armed resprings at once; 3 s after the first tap a block (which keeps the page alive)
// turns it back to Idle. The timer is neither cancelled nor restarted by later taps. Actions that
// must respring without asking (the resets) set `_hasPressedRespring` and call `respring`.

#include "frame/NIMCollapsibleListController.h"

class NIMGeneralListControllerWithRespringButton : public NIMCollapsibleListController {
public:
    using NIMCollapsibleListController::NIMCollapsibleListController;

    void init() override;
    void viewDidLoad() override;

    /// The button's action: arms the button, or resprings when it is armed.
    void respring();

    /// Arms the button without showing it, so that the next `respring` restarts at once.
    void setHasPressedRespring(bool pressed) { _hasPressedRespring = pressed; }

protected:
    std::shared_ptr<UIBarButtonItem> _respringButton;
    bool _hasPressedRespring = false;
};
