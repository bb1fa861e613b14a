#pragma once
// Battery Line > Colors: a colour for charging, low power mode and low battery, each shown only
// while its switch is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"

class NIMBatteryLineColorsPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMBatteryLineColorsPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();
};
