#include "frame/SharedActions.h"

#include "platform/BackBoardServices.h"
#include "platform/Cephei.h"
#include "platform/Darwin.h"
#include "platform/HBPreferences.h"
#include "platform/NSFileManager.h"
#include "platform/Process.h"
#include "storage/NimbraDomains.h"

namespace {

struct SelectedColorPicker {
    std::int64_t value = 0;
    bool made = false;
};

constexpr const char* kReloadTool = "/var/jb/usr/bin/sbreload";
constexpr const char* kReturnURL = "prefs:root=Nimbra";
constexpr const char* kCompanionApp = "com.veltram.nimbraapp";

}  // namespace

namespace NimbraColorPickers {

const char* libraryForPicker(std::int64_t picker)
{
    if (picker == 2)
        return kLibSparkColourPicker;
    if (picker == 1)
        return kLibColorPicker;
    return kLibCSColorPicker;
}

const char* cellClassForPicker(std::int64_t picker)
{
    if (picker == 1)
        return "HBColorPickerTableCell";
    if (picker == 2)
        return "SparkColourPickerCell";
    return "CSColorDisplayCell";
}

std::int64_t selectedColorPicker()
{
    return Process::current().global<SelectedColorPicker>().value;
}

bool colorPickerChosen()
{
    return Process::current().global<SelectedColorPicker>().made;
}

void choose(std::int64_t picker)
{
    auto& selected = Process::current().global<SelectedColorPicker>();
    selected.value = picker;
    selected.made = true;
    Darwin::dlopen(libraryForPicker(picker), Darwin::kRTLDLazy);
}

void selectColorPicker()
{
    std::int64_t stored = HBPreferences::preferencesForIdentifier(NimbraDomains::base())->integerForKey("selectedColorPicker");
    if (stored >= 1 && stored <= 3) {
        choose(stored);
        return;
    }
    auto& files = NSFileManager::defaultManager();
    if (files.fileExistsAtPath(kLibColorPicker))
        choose(1);
    else if (files.fileExistsAtPath(kLibSparkColourPicker))
        choose(2);
    else
        choose(3);
}

}  // namespace NimbraColorPickers

void fixColorPicker(SpecifierArray& specifiers, const std::shared_ptr<NSObject>& target)
{
    std::int64_t picker = NimbraColorPickers::selectedColorPicker();
    for (std::size_t i = 0; i < specifiers.size(); ++i) {
        const PSSpecifier& s = *specifiers[i];
        const ObjCClass* marker = s.cellClass();
        if (s.propertyForKey("cell").stringValue() != "PSLinkCell" || !marker || marker->name != "NimbraColorPickerTableCell")
            continue;
        auto row = PSSpecifier::preferenceSpecifierNamed(s.propertyForKey("label").stringValue(), target, nullptr,
                                                         PSCellType::Link);
        auto copy = [&](const char* from, const char* to) { row->setProperty(s.propertyForKey(from), to); };
        row->setProperty(PlistValue(NSClassFromString(NimbraColorPickers::cellClassForPicker(picker))), "cellClass");
        if (picker == 1) {
            copy("defaults", "defaults");
            copy("key", "key");
            copy("default", "default");
            copy("showAlpha", "showAlphaSlider");
            copy("id", "id");
            copy("PostNotification", "PostNotification");
        } else if (picker == 2) {
            copy("id", "id");
            PlistDictionary options{
                {"defaults", s.propertyForKey("defaults")},
                {"key", s.propertyForKey("key")},
                {"fallback", s.propertyForKey("default")},
                {"alpha", s.propertyForKey("showAlpha")},
                {"PreviewGradient", PlistValue(false)},
                {"PreviewStyle", PlistValue(2)},
            };
            if (!s.propertyForKey("PostNotification").isNil())
                options["PostNotification"] = s.propertyForKey("PostNotification");
            std::erase_if(options, [](auto& entry) { return entry.second.isNil(); });
            row->setProperty(PlistValue(std::move(options)), "libsparkcolourpicker");
        } else {
            copy("defaults", "defaults");
            copy("key", "key");
            copy("default", "fallback");
            copy("showAlpha", "alpha");
            copy("id", "id");
            copy("PostNotification", "PostNotification");
        }
        specifiers[i] = row;
    }
}

void respring(UIView& view)
{
    auto blur = std::make_shared<UIVisualEffectView>(UIBlurEffectStyle::SystemThickMaterial, view.bounds());
    blur->setAlpha(0.0);
    Process::current().global<NimbraBlur>().view = blur;
    view.addSubview(blur);
    UIView::animateWithDuration(1.5, 0, [blur] { blur->setAlpha(1.0); }, [](bool) {
        if (Process::current().mainBundleIdentifier() == kCompanionApp) {
            pid_t pid = 0;
            if (Darwin::posix_spawn(&pid, kReloadTool, {"sbreload"}) == 0) {
                int status = 0;
                Darwin::waitpid(pid, &status, Darwin::kWaitExited);
            }
            return;
        }
        HBRespringController::respringAndReturnTo(kReturnURL);
    });
}

void closeApp(const std::string& appName, const std::string& bundleIdentifier, UIViewController& presenter)
{
    if (auto framework = Darwin::dlopen(BackBoardServices::kFrameworkPath, Darwin::kRTLDLazy)) {
        auto terminate = reinterpret_cast<BackBoardServices::TerminateFunction>(
            Darwin::dlsym(framework, BackBoardServices::kTerminateSymbol));
        terminate(bundleIdentifier, 1, false, nullptr);
    }
    auto alert = UIAlertController::alertControllerWithTitle("Nimbra", appName + " Closed Successfully!");
    alert->addAction({"Dismiss", UIAlertActionStyle::Cancel, nullptr});
    presenter.presentViewController(alert, true);
}
