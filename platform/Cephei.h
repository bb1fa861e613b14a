#pragma once
// Cephei's preference-page classes: HBAppearanceSettings (a page's colour scheme),
// HBListController (a list controller that carries one and hands it on to the pages it pushes)
// and HBRespringController (restarts the home screen, recorded as {"event":"respring","url":...}).

#include "platform/PSListController.h"

#include <optional>
#include <string>

class HBAppearanceSettings : public NSObject {
public:
    /// Each colour is optional: nothing means the system's own.
    virtual std::optional<UIColor> tintColor() const { return std::nullopt; }
    virtual std::optional<UIColor> statusBarTintColor() const { return std::nullopt; }
    virtual std::optional<UIColor> navigationBarTitleColor() const { return std::nullopt; }
    virtual std::optional<UIColor> navigationBarTintColor() const { return std::nullopt; }
    virtual std::optional<UIColor> tableViewCellSeparatorColor() const { return std::nullopt; }
    virtual std::optional<UIColor> navigationBarBackgroundColor() const { return std::nullopt; }
    virtual std::optional<UIColor> tableViewCellTextColor() const { return std::nullopt; }
    virtual bool translucentNavigationBar() const { return true; }
    /// 0 automatic, 1 always, 2 never.
    virtual int largeTitleStyle() const { return 0; }
};

class HBListController : public PSListController {
public:
    /// The page's colour scheme, or the one of the page that pushed it.
    std::shared_ptr<HBAppearanceSettings> hb_appearanceSettings() const;
    void hb_setAppearanceSettings(std::shared_ptr<HBAppearanceSettings> settings) { _appearanceSettings = std::move(settings); }

    /// The navigation controller that shows the page (the same object here).
    std::shared_ptr<UINavigationController> realNavigationController() const { return navigationController(); }

private:
    std::shared_ptr<HBAppearanceSettings> _appearanceSettings;
};

namespace HBRespringController {

/// Restarts the home screen and reopens the Settings app at url afterwards.
void respringAndReturnTo(const std::string& url);

}  // namespace HBRespringController
