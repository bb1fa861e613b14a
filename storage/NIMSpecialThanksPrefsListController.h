#pragma once
// The credits page: its definition, nothing more.

#include "frame/NIMCollapsibleListController.h"

class NIMSpecialThanksPrefsListController : public NIMCollapsibleListController {
public:
    NIMSpecialThanksPrefsListController() : NIMCollapsibleListController(description()) {}
    static const PageDescription& description();
};
