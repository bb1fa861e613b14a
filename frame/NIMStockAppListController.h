#pragma once
// The base of the stock app pages: the collapsible-group lifecycle with, instead of the respring
// button, a two-line "Close <App>" button in the navigation bar that terminates the app, so that
// the app's changed settings take effect when it next opens.

#include "frame/NIMCollapsibleListController.h"
#include "frame/NIMPageCatalog.h"

/// The app a stock app page customises.
struct NIMStockApp {
    std::string name;
    std::string bundleIdentifier;
};

class NIMStockAppListController : public NIMCollapsibleListController {
public:
    NIMStockAppListController(const PageDescription& page, NIMStockApp app);

    /// Puts the "Close\n<name>" button (target the page, action closeApp) on the right of the bar.
    void init() override;
    /// Terminates the app and tells the user it was closed.
    void closeApp();

    const NIMStockApp& app() const { return _app; }

private:
    NIMStockApp _app;
};

/// Declares and registers a stock app page that is exactly its description, for one app.
#define NIM_APP_PAGE(Type, AppName, BundleIdentifier)                                                  \
    class Type : public NIMStockAppListController {                                                    \
    public:                                                                                            \
        Type() : NIMStockAppListController(description(), {AppName, BundleIdentifier}) {}              \
        static const PageDescription& description();                                                   \
    };                                                                                                 \
    NIM_REGISTER_PAGE(Type, NIMStockAppListController)
