#pragma once
// The per-toggle colour pages of Control Center (dark and light mode): no definition of their own,
// but one section per Control Center module the user has enabled, in the user's order, with the
// colour rows of the categories the toggles page turned on, keyed "<bundle id>_<colour name>".
//
// Categories test equality, unlike the toggles page (which tests "at least"): background colours
// for style 2 only, icon colours for style 1 only, border colours while the border is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "platform/ControlCenterServices.h"

class NIMToggleColorsListController : public NIMGeneralListControllerWithRespringButton {
public:
    /// suffix: "DarkMode" or "LightMode", appended to each colour name.
    NIMToggleColorsListController(const PageDescription& page, std::string suffix);

    /// Opens the Control Center domain's shared preferences (the store shared by these pages,
    /// replaced on every initialisation).
    void init() override;
    /// Built once, while the list is empty: every enabled module's rows, then the colour-picker fix-up.
    SpecifierArray& specifiers() override;
    /// A module's rows: its group header and up to six colour rows; nothing for the product's own
    /// power module or an unnamed system module.
    SpecifierArray generateSpecifiersForBundle(const NSBundle& bundle);

private:
    std::string _suffix;
};

/// Declares and registers a per-toggle colour page.
#define NIM_TOGGLE_COLORS_PAGE(Type, Suffix)                                                 \
    class Type : public NIMToggleColorsListController {                                      \
    public:                                                                                  \
        Type() : NIMToggleColorsListController(description(), Suffix) {}                     \
        static const PageDescription& description();                                         \
    };                                                                                       \
    NIM_REGISTER_PAGE(Type, NIMToggleColorsListController)
