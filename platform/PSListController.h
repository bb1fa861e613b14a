#pragma once
// Preferences.framework's PSListController: a page showing an ordered list of specifiers in a
// table. The list is made the first time `specifiers` is asked for and kept until the page goes.
//
// Table changes are recorded as {"event":"insert","ids":[...],"after":ID,"animated":B},
// {"event":"remove","ids":[...],"animated":B} (only rows that were really shown) and
// {"event":"reload"}.

#include "platform/PSSpecifier.h"
#include "platform/PSTableCell.h"
#include "platform/UIViewController.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

class PSPageDefinition;

class PSListController : public UIViewController {
public:
    /// The page's current list. The base answers the list as it is (empty until something loads
    /// it); pages override it to load their definition on first use.
    virtual SpecifierArray& specifiers();
    /// Whether the list exists (the platform's _specifiers is not nil).
    bool specifiersLoaded() const { return _specifiers != nullptr; }
    /// Replaces the list (setSpecifiers:).
    void setSpecifiers(SpecifierArray specifiers);

    /// Loads the page definition "<name>.plist" from the bundle's resources: its rows, in order,
    /// with target as their target, and its "title" as this page's title. A definition that is
    /// missing or malformed yields no rows and is reported (Process::reportError) naming the file.
    SpecifierArray loadSpecifiersFromPlistName(std::string_view name, const std::shared_ptr<NSObject>& target);
    /// What loadSpecifiersFromPlistName makes, with the parsed definition the rows came from (row i
    /// from its item i; nullptr, and no rows, when it failed). The same definition object is answered
    /// until its file changes.
    struct DefinedSpecifiers {
        SpecifierArray specifiers;
        std::shared_ptr<const PSPageDefinition> definition;
    };
    DefinedSpecifiers loadDefinedSpecifiers(std::string_view name, const std::shared_ptr<NSObject>& target);

    /// Whether that very specifier object is shown (identity, not equal ids).
    bool containsSpecifier(const std::shared_ptr<PSSpecifier>& specifier) const;
    /// The shown row whose "id" is identifier, or nullptr.
    std::shared_ptr<PSSpecifier> specifierForID(std::string_view identifier) const;
    /// Inserts the array, in order, directly after the shown row whose "id" is the anchor; does
    /// nothing when no shown row has that id. Does not remove duplicates.
    void insertContiguousSpecifiers(const SpecifierArray& specifiers, std::string_view afterSpecifierID, bool animated);
    /// Removes those specifier objects from the list; rows not shown are ignored.
    void removeContiguousSpecifiers(const SpecifierArray& specifiers, bool animated);
    /// Removes that one specifier object (removeSpecifier:animated:), recorded as a removal of one
    /// row; nothing when it is not shown.
    void removeSpecifier(const std::shared_ptr<PSSpecifier>& specifier, bool animated);
    /// Discards the list, asks `specifiers` again and redraws every row.
    virtual void reloadSpecifiers();
    /// Redraws one row ({"event":"reloadRow","id":...}).
    void reloadSpecifier(const std::shared_ptr<PSSpecifier>& specifier);

    /// The value hook: stores value under the row's "key" in its "defaults" domain, then, once it
    /// is on disk, posts the row's "PostNotification" (if any). Rows without both do nothing. A
    /// write that fails is reported (an error event naming the row's label and the page's title)
    /// and the row is redrawn with what is stored.
    virtual void setPreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier);
    /// The row's stored value, or its "default" when nothing is stored.
    virtual PlistValue readPreferenceValue(const std::shared_ptr<PSSpecifier>& specifier);

    /// The scrolling table: the first subview of the page's view.
    std::shared_ptr<UIScrollView> table();
    /// Makes the view and its table, and loads the rows (the table asks for them).
    void loadView() override;
    /// The cell the table shows for a row (made, and moved to the window, the first time the row
    /// is shown), or nullptr for a row that is not shown.
    std::shared_ptr<PSTableCell> cellForSpecifier(const std::shared_ptr<PSSpecifier>& specifier);
    /// The header view the table shows above a group row that names a "headerCellClass".
    std::shared_ptr<UIView> headerViewForSpecifier(const std::shared_ptr<PSSpecifier>& specifier);
    /// The user drags a row of a section from one index to another (both counted from 0 over the
    /// section's rows): the table moves the row, records {"event":"move","from":F,"to":T}, then tells
    /// the page (tableView:moveRowAtIndexPath:toIndexPath:). False when the indexes are out of range.
    bool moveRow(std::size_t sectionStart, std::size_t sectionLength, std::size_t from, std::size_t to);
    /// The page's answer to a moved row (indexes within the section).
    virtual void tableViewMoveRowAtIndexPath(std::size_t from, std::size_t to)
    {
        (void)from;
        (void)to;
    }

    /// Called by the table's scroll view when the user scrolls.
    virtual void scrollViewDidScroll(UIScrollView& scrollView) { (void)scrollView; }

protected:
    /// setPreferenceValue's work: false when the value was not stored (the row then shows what is
    /// stored), true when it is on disk or the row stores nothing.
    bool storePreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier);

    /// While one lives, the table makes no cells; when the last ends, the table makes the cells of
    /// the rows shown then. A rebuild that removes rows right after loading them so makes cells only
    /// for the rows that stay, as a table that asks for the cells it shows would.
    class DeferredDisplay {
    public:
        explicit DeferredDisplay(PSListController& page)
            : _page(page)
        {
            ++_page._displayDeferrals;
        }
        ~DeferredDisplay()
        {
            if (--_page._displayDeferrals == 0)
                _page.displayRows();
        }
        DeferredDisplay(const DeferredDisplay&) = delete;
        DeferredDisplay& operator=(const DeferredDisplay&) = delete;

    private:
        PSListController& _page;
    };

    std::shared_ptr<SpecifierArray> _specifiers;

private:
    /// Makes the cells (and header views) of every shown row that has none yet; nothing while a
    /// DeferredDisplay lives.
    void displayRows();

    /// cellForSpecifier for a row known to be shown.
    std::shared_ptr<PSTableCell> cellForShownSpecifier(const std::shared_ptr<PSSpecifier>& specifier);

    int _displayDeferrals = 0;

    /// A view the table made for a row, with the row it was made for.
    template <typename View>
    struct Shown {
        std::shared_ptr<PSSpecifier> row;
        std::shared_ptr<View> cell;
    };

    std::shared_ptr<UIScrollView> _table;
    /// The cells and header views made since the last reload, by row.
    std::unordered_map<const PSSpecifier*, Shown<PSTableCell>> _cells;
    std::unordered_map<const PSSpecifier*, Shown<UIView>> _headers;
};

/// The chooser a list row ("PSLinkListCell") opens to pick one of its "validValues".
class PSListItemsController : public PSListController {};
