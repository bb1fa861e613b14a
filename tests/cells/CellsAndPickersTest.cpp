// The custom cells and the pickers, on a page made for the purpose: image rows (one good file name,
// three bad ones), switch rows with wrapping titles and a subtitle, a movable row, and an app picker
// for a list and one for a single app.

#include "TestSupport.h"

#include "cells/NimbraImagePicker.h"
#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UIImage.h"
#include "storage/NIMAppPicker.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

class NIMCellsTestPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMCellsTestPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description()
    {
        static const PageDescription page{
            .definition = "pages/Test/Cells",
            .domain = "com.veltram.nimbraprefs.celltest",
            .actions = {
                {"selectBlackListedApps", NIMAppPicker::action("com.veltram.nimbraprefs.celltest.blackListedApps", "blackListedApps",
                                                               NIMAppPicker::Limit::AnyNumber)},
                {"selectDoubleTapApp", NIMAppPicker::action("com.veltram.nimbraprefs.celltest.gestureApps", "doubleTapApp",
                                                            NIMAppPicker::Limit::SingleApp)},
            },
        };
        return page;
    }
};

NIM_REGISTER_PAGE(NIMCellsTestPrefsListController, NIMGeneralListControllerWithRespringButton);

PlistValue row(PlistDictionary properties)
{
    return PlistValue(std::move(properties));
}

PlistValue imageRow(const std::string& id, const std::string& fileName)
{
    return row({{"cell", PlistValue("PSButtonCell")}, {"cellClass", PlistValue("NimbraImagePicker")}, {"id", PlistValue(id)},
                {"label", PlistValue("Wallpaper")}, {"action", PlistValue("chooseImage")}, {"fileName", PlistValue(fileName)}});
}

const std::string kStored = "/var/jb/var/mobile/Library/Nimbra/LockBackground.png";

struct CellsTest : ::testing::Test {
    test::TempDir resources, pictures;
    std::unique_ptr<test::SessionOnFreshRoot> session;

    CellsTest()
    {
        PlistArray items{
            imageRow("image", "LockBackground"), imageRow("escape", "../escape"), imageRow("nested", "a/b"), imageRow("empty", ""),
            row({{"cell", PlistValue("PSSwitchCell")}, {"cellClass", PlistValue("NimbraSwitchCellWithSubtitle")}, {"id", PlistValue("switch")},
                 {"label", PlistValue("A title long enough to wrap onto a second line")}, {"subtitle", PlistValue("Explains the switch")},
                 {"key", PlistValue("flag")}, {"defaults", PlistValue("com.veltram.nimbraprefs.celltest")}}),
            row({{"cell", PlistValue("PSStaticTextCell")}, {"cellClass", PlistValue("NimbraMovableCell")}, {"id", PlistValue("movable")}}),
            row({{"cell", PlistValue("PSButtonCell")}, {"id", PlistValue("blacklist")}, {"action", PlistValue("selectBlackListedApps")}}),
            row({{"cell", PlistValue("PSButtonCell")}, {"id", PlistValue("doubleTap")}, {"action", PlistValue("selectDoubleTapApp")}}),
        };
        test::writePlist(resources / "pages/Test/Cells.plist", PlistValue(PlistDictionary{{"items", PlistValue(items)}}),
                         PropertyListSerialization::Format::XML);
        session = std::make_unique<test::SessionOnFreshRoot>(Session::Options{.resources = resources.path()});
        s()->open("NIMCellsTestPrefsListController");
        s().events();
    }
    test::SessionOnFreshRoot& s() { return *session; }
    std::shared_ptr<PSTableCell> cell(const std::string& id)
    {
        auto page = s()->topPage();
        return page->cellForSpecifier(page->specifierForID(id));
    }
    fs::path picture(const std::string& name, int width, int height, std::uint8_t red)
    {
        std::vector<std::uint8_t> rgba(static_cast<std::size_t>(width) * height * 4, 255);
        for (std::size_t i = 0; i < rgba.size(); i += 4)
            rgba[i] = red;
        auto path = pictures / name;
        test::writeFile(path, UIImagePNGRepresentation(UIImage(width, height, rgba)));
        return path;
    }
    std::vector<std::string> filesUnder(const fs::path& folder)
    {
        std::vector<std::string> names;
        if (fs::exists(folder))
            for (auto& entry : fs::recursive_directory_iterator(folder))
                names.push_back(entry.path().lexically_relative(folder).generic_string());
        return names;
    }
};

}  // namespace

TEST_F(CellsTest, APickedImageIsStoredAsAFullSizePng)
{
    auto imageCell = std::dynamic_pointer_cast<NimbraImagePicker>(cell("image"));
    ASSERT_TRUE(imageCell);
    EXPECT_EQ(imageCell->previewImage()->frame(), (CGRect{331, 5, 34, 34}));
    EXPECT_FALSE(imageCell->previewContents()) << "nothing stored yet";

    s()->tap("image");
    EXPECT_EQ(s().events("present").at(0)["class"], "UIImagePickerController");
    s()->image(picture("photo.png", 640, 480, 200));
    auto stored = UIImage::imageWithContentsOfFile(test::under(s().root.path(), kStored));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->width(), 640);
    EXPECT_EQ(stored->height(), 480);
    EXPECT_EQ(stored->rgba()[0], 200);
    EXPECT_EQ(test::readFile(test::under(s().root.path(), kStored)).substr(1, 3), "PNG");
    EXPECT_EQ(imageCell->previewContents()->width(), 640);
    auto events = s().events();
    EXPECT_EQ(events.back()["event"], "activity") << "the spinner stops once the picker is gone";
    EXPECT_EQ(events.back()["animating"], false);

    s()->tap("image");
    s()->cancel();
    EXPECT_EQ(UIImage::imageWithContentsOfFile(test::under(s().root.path(), kStored))->width(), 640) << "cancel keeps the file";
    EXPECT_EQ(imageCell->previewContents()->width(), 640);
}

TEST_F(CellsTest, RemovePictureDeletesTheStoredFileAndEmptiesThePreview)
{
    auto imageCell = std::dynamic_pointer_cast<NimbraImagePicker>(cell("image"));
    s()->tap("image");
    s()->image(picture("photo.png", 64, 48, 10));
    ASSERT_TRUE(fs::exists(test::under(s().root.path(), kStored)));
    s().events();

    s()->removeImage("image");
    EXPECT_FALSE(fs::exists(test::under(s().root.path(), kStored)));
    EXPECT_FALSE(imageCell->previewContents());
    EXPECT_EQ(imageCell->previewImage()->imageName, "");
    auto deletes = s().events("delete");
    ASSERT_EQ(deletes.size(), 1u) << "the file manager removed it";
    EXPECT_EQ(deletes.at(0)["path"], kStored);

    s()->removeImage("image");  // nothing left to remove
    EXPECT_FALSE(imageCell->previewContents());
    EXPECT_THROW(s()->removeImage("switch"), CommandError) << "not a picture row";
    EXPECT_THROW(s()->removeImage("noSuchRow"), CommandError);
    EXPECT_THROW(s()->removeImageAt(999), CommandError);

    auto before = filesUnder(s().root.path());
    for (const char* id : {"escape", "nested", "empty"})
        s()->removeImage(id);
    EXPECT_EQ(filesUnder(s().root.path()), before) << "bad file names remove nothing anywhere";
}

TEST_F(CellsTest, ThePreviewIsMadeOnceAndFollowsLayout)
{
    auto imageCell = std::dynamic_pointer_cast<NimbraImagePicker>(cell("image"));
    auto preview = imageCell->previewImage();
    imageCell->didMoveToWindow();
    EXPECT_EQ(imageCell->previewImage(), preview);
    imageCell->setFrame(CGRect{0, 0, 320, 60});
    imageCell->layoutSubviews();
    EXPECT_EQ(preview->frame(), (CGRect{260, 5, 50, 50}));
}

TEST_F(CellsTest, BadFileNamesWriteNothingAnywhere)
{
    auto before = filesUnder(s().root.path());
    for (const char* id : {"escape", "nested", "empty"}) {
        s()->tap(id);
        EXPECT_TRUE(s().events("present").empty()) << id;
    }
    EXPECT_EQ(filesUnder(s().root.path()), before);
}

TEST_F(CellsTest, SwitchAndMovableCellsSetThemselvesUp)
{
    auto switchCell = cell("switch");
    EXPECT_EQ(switchCell->style(), 3);
    EXPECT_EQ(switchCell->titleLabel().numberOfLines, 0);
    EXPECT_TRUE(switchCell->titleLabel().wordWrapping);
    EXPECT_EQ(switchCell->detailTextLabel().text, "Explains the switch");
    EXPECT_TRUE(switchCell->detailTextLabel().leftAligned);
    auto movable = cell("movable");
    EXPECT_TRUE(movable->showsReorderControl());
    EXPECT_TRUE(movable->isEditing());
}

TEST_F(CellsTest, AListPickerStoresEveryChosenApp)
{
    s()->tap("blacklist");
    auto pushes = s().events("push");
    ASSERT_EQ(pushes.size(), 1u);
    EXPECT_EQ(pushes[0].dump(), R"({"event":"push","class":"SparkAppListTableViewController","identifier":"com.veltram.nimbraprefs.celltest.blackListedApps","key":"blackListedApps","maxEnabled":null})");
    s()->pick({"com.apple.camera", "com.apple.mobilesafari", "com.apple.Music"});
    s()->pick({"com.apple.mobilesafari"});
    auto file = s()->file("/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.celltest.blackListedApps.plist");
    EXPECT_EQ(file["value"], (nlohmann::ordered_json{{"blackListedApps", {"com.apple.camera", "com.apple.Music"}}}));
    EXPECT_THROW(s()->pick({"com.example.not-installed"}), CommandError);
    s()->back();
    EXPECT_EQ(s()->topPage()->className(), "NIMCellsTestPrefsListController");
}

TEST_F(CellsTest, ASingleAppPickerKeepsOneApp)
{
    s()->tap("doubleTap");
    EXPECT_EQ(s().events("push").at(0)["maxEnabled"], 1);
    s()->pick({"com.apple.camera"});
    s()->pick({"com.apple.MobileSMS"});
    auto rows = s()->rows()["rows"];
    int chosen = 0;
    for (auto& row : rows)
        chosen += row.value("value", false) ? 1 : 0;
    EXPECT_EQ(chosen, 1);
    auto file = s()->file("/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.celltest.gestureApps.plist");
    EXPECT_EQ(file["value"], (nlohmann::ordered_json{{"doubleTapApp", {"com.apple.MobileSMS"}}}));
}
