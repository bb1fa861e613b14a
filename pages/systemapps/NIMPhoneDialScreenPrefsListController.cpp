// Phone > Dial Screen: the keypad style, and behind the colourising switch the dial screen's
// background colours (one or four, by mode), the number pad's and the call button's colours.
//
// The reload keys the number pad colour to the keypad style switch, not to its own switch; kept as
// it is.
//
// The colourising switch re-applies the rules of its rows; each does nothing when its row is
// already shown.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

class NIMPhoneDialScreenPrefsListController : public NIMStockAppListController {
public:
    NIMPhoneDialScreenPrefsListController() : NIMStockAppListController(description(), {"Phone", "com.apple.mobilephone"}) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;

private:
    /// The background colour rows of a mode: none for 1, the first for 2, all four otherwise
    /// (each inserted only when it is not shown yet).
    void showBackgroundColors(std::int64_t mode);
};

NIM_REGISTER_PAGE(NIMPhoneDialScreenPrefsListController, NIMStockAppListController);

namespace {

const std::vector<std::string> kBackgroundColors = numbered("bgColorChild%d", 1, 4);
const std::vector<std::string> kLaterBackgroundColors = numbered("bgColorChild%d", 2, 4);

}  // namespace

const PageDescription& NIMPhoneDialScreenPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/PhoneDialScreen",
        .domain = NimbraDomains::identifier(".phone"),
        .rules = {
            when("enableCustomKeypadStyle", Condition::on()).editedBy("keypadParent").chain({"keypadChild"}, "keypadParent"),
            when("enableDialScreenColorization", Condition::on()).editedBy("topLevelSwitch")
                .chain(numbered("topLevelChild%d", 1, 6), "topLevelSwitch")
                .hiding(numbered("topLevelChild%d", 1, 6) + kBackgroundColors + std::vector<std::string>{"numpadChild", "callChild"}),
            when("backgroundColorMode", Condition::equal(2)).named("oneBackgroundColor").editedBy("topLevelChild2")
                .chain({"bgColorChild1"}, "topLevelChild2").reloadRemovingWhen(Condition::equal(1)),
            when("backgroundColorMode", Condition::notIn({1, 2})).named("fourBackgroundColors").editedBy("topLevelChild2")
                .chain(kLaterBackgroundColors, "bgColorChild1").reloadRemovingWhen(Condition::in({1, 2})),
            when("enableCustomNumpadBGColor", Condition::on()).editedBy("topLevelChild4").chain({"numpadChild"}, "topLevelChild4")
                .reloadReading("enableCustomKeypadStyle").guardedAlsoWhenNested(),
            when("enableCustomDialButtonBGColor", Condition::on()).editedBy("topLevelChild6").chain({"callChild"}, "topLevelChild6")
                .guardedAlsoWhenNested(),
        },
    };
    return page;
}

void NIMPhoneDialScreenPrefsListController::showBackgroundColors(std::int64_t mode)
{
    if (mode == 1)
        return;
    std::string anchor = "topLevelChild2";
    for (const std::string& id : mode == 2 ? std::vector<std::string>{"bgColorChild1"} : kBackgroundColors) {
        if (!isShown(id))
            insert(id, anchor);
        anchor = id;
    }
}

void NIMPhoneDialScreenPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key == "backgroundColorMode") {
        std::int64_t mode = value.integerValue();
        if (mode == 1)
            remove(kBackgroundColors);
        else if (mode == 2)
            remove(kLaterBackgroundColors);
        showBackgroundColors(mode);
        return;
    }
    if (key == "enableDialScreenColorization" && value.boolValue()) {
        if (!show(rule("enableDialScreenColorization")))
            return;
        showBackgroundColors(valueOfRow("topLevelChild2").integerValue());
        showNested({"enableCustomNumpadBGColor", "enableCustomDialButtonBGColor"});
        return;
    }
    NIMStockAppListController::valueChanged(key, value);
}
