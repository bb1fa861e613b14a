#pragma once
// The bundle's colour scheme: a purple navigation bar with white title and buttons, blue tint and
// cell text, no cell separators, an opaque bar and never a large title. The root page installs it
// and every page it pushes inherits it.

#include "platform/Cephei.h"

class NIMAppearanceSettings : public HBAppearanceSettings {
public:
    std::optional<UIColor> tintColor() const override { return UIColor{49 / 255.0, 82 / 255.0, 222 / 255.0, 1.0}; }
    std::optional<UIColor> statusBarTintColor() const override { return UIColor::whiteColor(); }
    std::optional<UIColor> navigationBarTitleColor() const override { return UIColor::whiteColor(); }
    std::optional<UIColor> navigationBarTintColor() const override { return UIColor::whiteColor(); }
    std::optional<UIColor> tableViewCellSeparatorColor() const override { return UIColor::clearColor(); }
    std::optional<UIColor> navigationBarBackgroundColor() const override { return UIColor{138 / 255.0, 78 / 255.0, 189 / 255.0, 1.0}; }
    std::optional<UIColor> tableViewCellTextColor() const override { return tintColor(); }
    bool translucentNavigationBar() const override { return false; }
    int largeTitleStyle() const override { return 2; }
};
