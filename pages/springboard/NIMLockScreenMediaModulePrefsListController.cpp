// Lock Screen > Media Module: the module's style, its colour style (static colours, or a style
// with transparency and a border), album artwork and the module's corner radius.
//
// The border block's first row follows "backgroundAlphaParent" while the background is
// transparent, and "backgroundAlphaChild2" otherwise.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

class NIMLockScreenMediaModulePrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMLockScreenMediaModulePrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
};

NIM_REGISTER_PAGE(NIMLockScreenMediaModulePrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

const std::vector<std::string> kStatic = numbered("staticColorsChild%d", 1, 3);
const std::vector<std::string> kAlpha{"backgroundAlphaChild1", "backgroundAlphaChild2"};
const std::vector<std::string> kBorder = numbered("borderChild%d", 1, 4);

}  // namespace

const PageDescription& NIMLockScreenMediaModulePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/LockScreenMediaModule",
        .domain = NimbraDomains::identifier(".lockscreen"),
        .fixesColorRows = true,
        .rules = {
            when("mediaModuleStyle", Condition::notEqual(0)).editedBy("styleParent").chain({"styleChild1", "styleChild2"}, "styleParent"),
            when("mediaModuleColorsStyle", Condition::equal(1)).named("staticColors").editedBy("colorStyleParent")
                .chain(kStatic, "colorStyleParent").reloadRemovingWhen(Condition::in({0, 2})),
            when("mediaModuleColorsStyle", Condition::notEqual(0)).named("styledBlocks").editedBy("colorStyleParent")
                .chain(kAlpha, "backgroundAlphaParent").chain({"borderGrandParent", "borderParent"}, "backgroundAlphaChild2")
                .chain(kBorder, "borderParent").reloadRemovingWhen(Condition::equal(0)),
            when("mediaModuleTransparentBackground", Condition::off()).editedBy("backgroundAlphaParent").chain(kAlpha, "backgroundAlphaParent")
                .onlyWhenRow("colorStyleParent", Condition::atLeast(1)),
            when("mediaModuleHideAlbumArtwork", Condition::off()).editedBy("artworkParent").chain({"artworkChild"}, "artworkParent")
                .nests({"mediaModuleCustomCornerRadiusEnabled"}),
            when("mediaModuleCustomCornerRadiusEnabled", Condition::on()).editedBy("artworkChild")
                .chain({"artworkGrandChild1", "artworkGrandChild2"}, "artworkChild"),
            when("addMediaModuleBorderDynamicColor", Condition::on()).editedBy("borderParent").chain(kBorder, "borderParent")
                .onlyWhenRow("colorStyleParent", Condition::atLeast(1)),
            when("enableCustomMediaModuleCornerRadius", Condition::on()).editedBy("cornerRadiusParent")
                .chain(numbered("cornerRadiusChild%d", 1, 5), "cornerRadiusParent"),
        },
        .captured = numbered("cornerRadiusChild%d", 1, 5) + std::vector<std::string>{"colorStyleParent"} + kStatic +
                    std::vector<std::string>{"styleChild1", "styleChild2", "backgroundAlphaParent"} + kAlpha +
                    std::vector<std::string>{"artworkParent", "artworkChild", "artworkGrandChild1", "artworkGrandChild2",
                                             "borderGrandParent", "borderParent"} + kBorder,
    };
    return page;
}

void NIMLockScreenMediaModulePrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key != "mediaModuleColorsStyle") {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    std::int64_t style = value.integerValue();
    if (style == 0) {
        remove(kStatic + kAlpha + std::vector<std::string>{"borderGrandParent", "borderParent"} + kBorder);
        return;
    }
    if (style == 1 && !isShown("staticColorsChild1"))
        insertChain(kStatic, "colorStyleParent");
    else if (style == 2)
        remove(kStatic);
    bool transparent = valueOfRow("backgroundAlphaParent").boolValue();
    if (!isShown("backgroundAlphaChild1") && !transparent)
        insertChain(kAlpha, "backgroundAlphaParent");
    if (!isShown("borderGrandParent")) {
        insert("borderGrandParent", transparent ? "backgroundAlphaParent" : "backgroundAlphaChild2");
        insert("borderParent", "borderGrandParent");
    }
    if (!isShown("borderChild1") && valueOfRow("borderParent").boolValue())
        insertChain(kBorder, "borderParent");
}
