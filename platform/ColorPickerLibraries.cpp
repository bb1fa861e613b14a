// The colour-picker libraries a device may have installed, each defining the cell class its
// colour rows use. Their classes resolve by name only once the library was opened with dlopen.
// Cephei's own cell classes are always there.

#include "platform/ColorPickerLibraries.h"

#include "platform/DarwinNotifyCenter.h"
#include "platform/HBPreferences.h"
#include "platform/PSTableCell.h"

namespace {

template <class Cell>
ObjCClass cellClass(std::string name, std::string image)
{
    return ObjCClass{std::move(name), "PSTableCell", std::move(image),
                     [] { return std::static_pointer_cast<NSObject>(NSObject::make<Cell>()); }};
}

const bool registered [[maybe_unused]] = [] {
    ObjCRuntime::registerClass(cellClass<PSTableCell>("HBLinkTableCell", ""));
    ObjCRuntime::registerClass(cellClass<PSTableCell>("HBColorPickerTableCell", "/var/jb/usr/lib/libcolorpicker.dylib"));
    ObjCRuntime::registerClass(cellClass<PSTableCell>("SparkColourPickerCell", "/var/jb/usr/lib/libsparkcolourpicker.dylib"));
    ObjCRuntime::registerClass(cellClass<PSTableCell>("CSColorDisplayCell", "/var/jb/usr/lib/libCSColorPicker.dylib"));
    return true;
}();

}  // namespace

namespace SparkColourPicker {

bool isSparkRow(const PSSpecifier& row)
{
    return row.propertyForKey("libsparkcolourpicker").kind() == PlistValue::Kind::Dictionary;
}

PlistValue storedValue(const PSSpecifier& row)
{
    const PlistValue& options = row.propertyForKey("libsparkcolourpicker");
    const std::string& domain = options["defaults"].stringValue();
    const std::string& key = options["key"].stringValue();
    if (!domain.empty() && !key.empty())
        if (PlistValue stored = HBPreferences::preferencesForIdentifier(domain)->objectForKey(key); !stored.isNil())
            return stored;
    return options["fallback"];
}

bool store(const PSSpecifier& row, const PlistValue& value)
{
    const PlistValue& options = row.propertyForKey("libsparkcolourpicker");
    const std::string& domain = options["defaults"].stringValue();
    const std::string& key = options["key"].stringValue();
    if (domain.empty() || key.empty() || !HBPreferences::preferencesForIdentifier(domain)->setObject(value, key))
        return false;
    if (const std::string& name = options["PostNotification"].stringValue(); !name.empty())
        CFNotificationCenterGetDarwinNotifyCenter().postNotification(name);
    return true;
}

}  // namespace SparkColourPicker
