#pragma once
// Preferences.framework's table cells. The Settings host makes one for each shown row whose
// definition names a "cellClass"; cells the bundle defines may take over the row's target.

#include "platform/PSSpecifier.h"
#include "platform/UIKit.h"

class PSTableCell : public UIView {
public:
    PSTableCell()
        : UIView("cell", CGRect{0, 0, 375, 44})
    {
    }
    /// initWithStyle:reuseIdentifier:specifier: (style 0 default, 3 subtitle).
    virtual void initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style = 0)
    {
        _specifier = specifier;
        _style = style;
    }
    std::shared_ptr<PSSpecifier> specifier() const { return _specifier.lock(); }
    int style() const { return _style; }

private:
    std::weak_ptr<PSSpecifier> _specifier;
    int _style = 0;
};

class PSSwitchTableCell : public PSTableCell {};
