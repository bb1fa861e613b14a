// The colour-picker libraries a device may have installed, each defining the cell class its
// colour rows use. Their classes resolve by name only once the library was opened with dlopen.
// Cephei's own cell classes are always there.

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
