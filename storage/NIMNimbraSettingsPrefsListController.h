#pragma once
// The maintenance page: which colour-picker library colour rows use, and the resets of everything,
// all settings, all colours and the colour caches.

#include "frame/NIMGeneralListControllerWithRespringButton.h"

class NIMNimbraSettingsPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMNimbraSettingsPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

    /// Removes every item below folder whose relative path pattern matches (case-insensitively,
    /// anywhere in the path).
    void removeFiles(const std::string& pattern, const std::string& folder);

protected:
    /// "selectedColorPicker" re-runs the library choice for pages loaded from now on.
    void valueChanged(const std::string& key, const PlistValue& value) override;
};
