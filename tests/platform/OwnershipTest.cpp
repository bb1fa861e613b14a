// What a page owns goes with it: a rebuilt list's rows and cells, a popped page with everything it
// holds, and the blur views of the root page's appearances. Blocks and alerts keep a page only
// until they are done with it. Observed through weak references, as an instruments session would.

#include "TestSupport.h"

#include "frame/NIMCollapsibleListController.h"
#include "platform/UIViewController.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* kPage = "NIMSystemRootPrefsListController";

struct OwnershipTest : ::testing::Test {
    test::SessionOnFreshRoot session;

    OwnershipTest()
    {
        session->open("NIMRootListController");
        session->open(kPage);
        session.events();
    }
    std::shared_ptr<NIMCollapsibleListController> page()
    {
        return std::dynamic_pointer_cast<NIMCollapsibleListController>(session->topPage());
    }
    /// Weak references to every shown row and its cell.
    std::vector<std::weak_ptr<NSObject>> shownRowsAndCells()
    {
        std::vector<std::weak_ptr<NSObject>> found;
        for (auto& row : page()->specifiers()) {
            found.push_back(row);
            found.push_back(page()->cellForSpecifier(row));
        }
        return found;
    }
    static std::size_t alive(const std::vector<std::weak_ptr<NSObject>>& objects)
    {
        std::size_t count = 0;
        for (auto& object : objects)
            count += !object.expired();
        return count;
    }
};

}  // namespace

TEST_F(OwnershipTest, ARebuildReleasesTheOldRowsAndCellsButKeepsTheSavedOnes)
{
    session->set("enabled", PlistValue(true));
    auto before = shownRowsAndCells();
    std::size_t tableViews = page()->table()->subviews().size();
    std::size_t saved = page()->savedSpecifiers().size();
    ASSERT_GT(before.size(), 40u);
    for (int i = 0; i < 5; ++i)
        session->reload();
    // A captured row is replaced in the saved dictionary by its fresh copy at every rebuild.
    EXPECT_EQ(alive(before), 0u) << "old rows or cells are still held";
    EXPECT_EQ(page()->table()->subviews().size(), tableViews) << "the table keeps old cells";
    EXPECT_EQ(page()->savedSpecifiers().size(), saved);
}

TEST_F(OwnershipTest, APoppedPageGoesWithItsRowsOnceItsBlocksHaveRun)
{
    std::weak_ptr<NSObject> popped = page();
    auto rows = shownRowsAndCells();
    session->tapBarButton();  // arms the respring button: a block holds the page for 3 s
    session->back();
    EXPECT_FALSE(popped.expired()) << "the pending revert keeps the page";
    session->wait(3.0);
    EXPECT_TRUE(popped.expired()) << "the page outlives its blocks";
    EXPECT_EQ(alive(rows), 0u);
}

TEST_F(OwnershipTest, AnAlertKeepsItsPageUntilItIsAnswered)
{
    session->open("NIMNimbraSettingsPrefsListController");
    std::weak_ptr<NSObject> maintenance = page();
    session->call("resetColors");
    session->back();
    EXPECT_FALSE(maintenance.expired()) << "Confirm still refers to the page";
    session->alert("Cancel");
    EXPECT_TRUE(maintenance.expired());
}

TEST_F(OwnershipTest, TheRootPageKeepsOneBlurOfItsOwnAppearances)
{
    session->back();
    auto root = session->topPage();
    std::size_t views = root->view()->subviews().size();
    for (int i = 0; i < 20; ++i) {
        session->open(kPage);
        session->back();
    }
    EXPECT_EQ(root->view()->subviews().size(), views);
}
