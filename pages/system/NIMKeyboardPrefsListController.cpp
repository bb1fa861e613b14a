// System > Keyboard: the keyboard's master switch over its options, its colour mode (system
// colours, or a custom background of one or four colours) and its padding, with the resets.
//
// The value hook departs from the table on purpose: choosing the custom mode, or four background
// colours, inserts the rows without checking whether they are shown already.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

class NIMKeyboardPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMKeyboardPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;

private:
    /// The seven custom rows, the first background colour, and the other three when the row
    /// "colorModeChildCustom7" is 2; no presence check.
    void insertCustomRows();
};

NIM_REGISTER_PAGE(NIMKeyboardPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kCustomRows = numbered("colorModeChildCustom%d", 1, 7);
const std::vector<std::string> kLaterColors = numbered("customColorChild%d", 2, 4);
const std::vector<std::string> kColors = numbered("customColorChild%d", 1, 4);

}  // namespace

const PageDescription& NIMKeyboardPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/System/Keyboard",
        .domain = NimbraDomains::identifier(".keyboard"),
        .fixesColorRows = true,
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 13), "topLevelSwitch")
                .hiding(numbered("topLevelChild%d", 1, 13) + kCustomRows +
                        std::vector<std::string>{"keyboardPaddingChild", "colorModeChildSystem"} + kColors),
            when("colorMode", Condition::equal(1)).named("systemColors").editedBy("topLevelChild6")
                .chain({"colorModeChildSystem"}, "topLevelChild6").reloadRemovingWhen(Condition::in({0, 2})),
            when("colorMode", Condition::equal(2)).named("customColors").editedBy("topLevelChild6")
                .chain(kCustomRows, "topLevelChild6").place("customColorChild1", "colorModeChildCustom7")
                .hiding(kCustomRows + kColors).reloadRemovingWhen(Condition::in({0, 1})),
            when("customBGColorMode", Condition::equal(2)).editedBy("colorModeChildCustom7")
                .chain(kLaterColors, "customColorChild1").reloadRemovingWhen(Condition::equal(1)),
            when("enableCustomKeyboardPadding", Condition::on()).editedBy("topLevelChild10")
                .chain({"keyboardPaddingChild"}, "topLevelChild10"),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Keyboard", ".keyboard", {}))},
            {"resetColors", confirmedReset(groupColorsReset("Keyboard", ".keyboard"))},
        },
        .insertedAgain = kCustomRows + kColors,
    };
    return page;
}

void NIMKeyboardPrefsListController::insertCustomRows()
{
    insertChain(kCustomRows, "topLevelChild6");
    insert("customColorChild1", "colorModeChildCustom7");
    if (valueOfRow("colorModeChildCustom7").integerValue() == 2)
        insertChain(kLaterColors, "customColorChild1");
}

void NIMKeyboardPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key == "enabled") {
        if (!value.boolValue()) {
            hide(rule("enabled"));
            return;
        }
        if (isShown("topLevelChild1"))
            return;
        insertChain(numbered("topLevelChild%d", 1, 13), "topLevelSwitch");
        std::int64_t mode = valueOfRow("topLevelChild6").integerValue();
        if (mode == 1)
            insert("colorModeChildSystem", "topLevelChild6");
        else if (mode == 2)
            insertCustomRows();
        if (valueOfRow("topLevelChild10").boolValue())
            insert("keyboardPaddingChild", "topLevelChild10");
    } else if (key == "colorMode") {
        switch (value.integerValue()) {
        case 0:
            remove(std::vector<std::string>{"colorModeChildSystem"} + kCustomRows + kColors);
            break;
        case 1:
            remove(kCustomRows + kColors);
            if (!isShown("colorModeChildSystem"))
                insert("colorModeChildSystem", "topLevelChild6");
            break;
        case 2:
            remove({"colorModeChildSystem"});
            insertCustomRows();
            break;
        default:
            break;
        }
    } else if (key == "customBGColorMode") {
        if (value.integerValue() == 1)
            remove(kLaterColors);
        else if (value.integerValue() == 2)
            insertChain(kLaterColors, "customColorChild1");
    } else {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
    }
}
