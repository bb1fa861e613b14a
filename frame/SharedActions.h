#pragma once
// The free functions every page shares, and the process-wide colour-picker choice.

#include "platform/PSSpecifier.h"
#include "platform/UIKit.h"

#include <cstdint>
#include <memory>
#include <string>

class UIViewController;

/// The colour-picker libraries and the cell class each one's colour rows use.
namespace NimbraColorPickers {

inline constexpr const char* kLibColorPicker = "/var/jb/usr/lib/libcolorpicker.dylib";
inline constexpr const char* kLibSparkColourPicker = "/var/jb/usr/lib/libsparkcolourpicker.dylib";
inline constexpr const char* kLibCSColorPicker = "/var/jb/usr/lib/libCSColorPicker.dylib";

/// The library file of a picker value: 1 libcolorpicker, 2 libsparkcolourpicker, anything else
/// libCSColorPicker.
const char* libraryForPicker(std::int64_t picker);
/// The cell class name of a picker value: 1 HBColorPickerTableCell, 2 SparkColourPickerCell,
/// anything else CSColorDisplayCell.
const char* cellClassForPicker(std::int64_t picker);

/// The selected colour picker (one process-wide integer; 0 until a selection ran).
std::int64_t selectedColorPicker();
/// Stores picker as the selection and opens its library (lazily; a failure is ignored). Used when
/// the maintenance page's "selectedColorPicker" row changes.
void choose(std::int64_t picker);
/// Whether a choice was made in this process (by the selection or by `choose`, even of 0); NO
/// until then.
bool colorPickerChosen();
/// The selection the root page runs in init: the stored "selectedColorPicker" when it is 1, 2 or 3;
/// otherwise the first of libcolorpicker (1) and libsparkcolourpicker (2) whose file exists, else 3
/// (not probed). The probed choice is not written back. The chosen library is opened.
void selectColorPicker();

}  // namespace NimbraColorPickers

/// Rewrites the colour rows of a freshly loaded page for the selected colour-picker library: every
/// row whose "cell" is "PSLinkCell" and whose "cellClass" is NimbraColorPickerTableCell is replaced
/// by a new link row, targeting target, carrying the picker's cell class and properties.
void fixColorPicker(SpecifierArray& specifiers, const std::shared_ptr<NSObject>& target);

/// Restarts the home screen behind a blur over view: a thick-material blur fades in over 1.5 s,
/// then, inside the companion app, "/var/jb/usr/bin/sbreload" is launched and waited for;
/// elsewhere the Settings app resprings and returns to "prefs:root=Nimbra".
void respring(UIView& view);

/// Terminates an app by bundle identifier through BackBoardServices (when that framework loads),
/// then tells the user "<appName> Closed Successfully!" in any case.
void closeApp(const std::string& appName, const std::string& bundleIdentifier, UIViewController& presenter);

/// The process-wide blur shared by the respring and the root page's appearance.
struct NimbraBlur {
    std::shared_ptr<UIVisualEffectView> view;
};
