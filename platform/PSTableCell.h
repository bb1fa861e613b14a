#pragma once
// Preferences.framework's table cells. The table makes one for each shown row, of the row's
// "cellClass" when it names one, and keeps it while the row's object lives in the page; a cell the
// bundle defines may take over the row's target (so that the row's action reaches the cell).

#include "platform/PSSpecifier.h"
#include "platform/UIKit.h"

/// A label's layout as a cell sets it up.
struct UILabelStyle {
    std::string text;
    int numberOfLines = 1;
    bool wordWrapping = false;
    bool leftAligned = false;
};

class PSTableCell : public UIView {
public:
    PSTableCell()
        : UIView("cell", CGRect{0, 0, 375, 44})
    {
    }

    /// initWithStyle:reuseIdentifier:specifier: (style 0 default, 3 subtitle).
    virtual void initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style);
    /// The cell entered the table's window.
    virtual void didMoveToWindow() {}
    /// A layout pass.
    virtual void layoutSubviews() {}

    std::shared_ptr<PSSpecifier> specifier() const { return _specifier.lock(); }
    int style() const { return _style; }
    UILabelStyle& titleLabel() { return _titleLabel; }
    UILabelStyle& detailTextLabel() { return _detailTextLabel; }

    bool showsReorderControl() const { return _showsReorderControl; }
    void setShowsReorderControl(bool shows) { _showsReorderControl = shows; }
    bool isEditing() const { return _editing; }
    void setEditing(bool editing) { _editing = editing; }

private:
    std::weak_ptr<PSSpecifier> _specifier;
    int _style = 0;
    UILabelStyle _titleLabel;
    UILabelStyle _detailTextLabel;
    bool _showsReorderControl = false;
    bool _editing = false;
};

class PSSwitchTableCell : public PSTableCell {};

/// A table header view a group row names in "headerCellClass" (PSHeaderFooterView): made with the
/// row, asked for its height at the table's width, then laid out at the top of its section.
class PSHeaderView : public UIView {
public:
    PSHeaderView()
        : UIView("header")
    {
    }
    virtual void initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier) { (void)specifier; }
    virtual double preferredHeightForWidth(double width) { (void)width; return 0; }
};
