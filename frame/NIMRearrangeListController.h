#pragma once
// The rearrangement pages of the connectivity and power modules: no definition of their own, but a
// group row and one movable row per button, in the stored order. Dragging a row reorders the buttons
// and stores every slot again.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"

#include <map>
#include <string>
#include <vector>

class NIMRearrangeListController : public NIMGeneralListControllerWithRespringButton {
public:
    struct Layout {
        /// The slot keys' format ("connectivityPos%d"), numbered from 0.
        std::string slotFormat;
        int capacity;
        /// Button controller class name -> row title.
        std::map<std::string, std::string> titles;
        /// The group row's title.
        std::string groupTitle;
    };

    NIMRearrangeListController(const PageDescription& page, Layout layout);

    /// Built once, while the list is empty: the group row, then one row per stored name.
    SpecifierArray& specifiers() override;
    /// A movable static row titled after a button controller class (untitled when unknown).
    std::shared_ptr<PSSpecifier> generateSpecifier(const std::string& name);
    void tableViewMoveRowAtIndexPath(std::size_t from, std::size_t to) override;
    /// Stores name i under slot i, for every name.
    void saveSettings();

    /// The button names in their current order.
    const std::vector<std::string>& order() const { return _order; }

protected:
    /// The stored value of a slot key (nil when absent).
    virtual PlistValue storedSlot(const std::string& key) = 0;
    /// Writes every slot (key -> name) to the store.
    virtual void storeSlots(const std::vector<std::pair<std::string, std::string>>& slots) = 0;
    /// The rows to show when no slot is stored (nothing: just the group row).
    virtual SpecifierArray rowsForEmptyOrder() { return {}; }
    /// Called before the slots are read, once.
    virtual void prepareOrder() {}

    std::string slotKey(int index) const;
    const Layout& layout() const { return _layout; }

private:
    Layout _layout;
    std::vector<std::string> _order;
};
