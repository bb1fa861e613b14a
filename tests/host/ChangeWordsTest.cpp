// A restore's changes in the words of the pages: the page's path, the row's label and the values'
// titles; a value no page shows named by its group, never by its domain.

#include "TestSupport.h"

#include "frame/NIMPageCatalog.h"
#include "host/ChangeWords.h"
#include "platform/PSPageDefinition.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Json = nlohmann::ordered_json;

const ChangeWords& words()
{
    static SearchIndex index(test::resourcesDir());
    static ChangeWords described(index, test::resourcesDir());
    return described;
}

std::string line(const std::string& domain, const std::string& key, Json old, Json now)
{
    Json change{{"domain", domain}, {"key", key}, {"old", std::move(old)}, {"new", std::move(now)}};
    return words().describe(change)["text"].get<std::string>();
}

}  // namespace

TEST(ChangeWords, AValueIsNamedByItsPageRowAndTitles)
{
    Json change{{"domain", "com.veltram.nimbraprefs.homescreen"}, {"key", "dockType"}, {"old", nullptr}, {"new", 2}};
    Json described = words().describe(change);
    // What the dry run said stays as it was.
    EXPECT_EQ(described["domain"], "com.veltram.nimbraprefs.homescreen");
    EXPECT_EQ(described["key"], "dockType");
    EXPECT_EQ(described["old"], nullptr);
    EXPECT_EQ(described["new"], 2);
    EXPECT_EQ(described["where"], "Home Screen \u203a Dock");
    EXPECT_EQ(described["setting"], "Style");
    // Nothing stored shows the row's default.
    EXPECT_EQ(described["from"], "Default");
    EXPECT_EQ(described["to"], "Floating");
    EXPECT_EQ(described["text"], "Home Screen \u203a Dock \u203a Style: Default \u2192 Floating");
}

TEST(ChangeWords, EachKindOfRowShowsItsValueAsTheRowDoes)
{
    EXPECT_EQ(line("com.veltram.nimbraprefs", "nimbraEnabled", false, true), "Nimbra \u203a Enable Nimbra: Off \u2192 On");
    EXPECT_EQ(line("com.veltram.nimbraprefs.homescreen", "floatingDockInApps", nullptr, true),
              "Home Screen \u203a Dock \u203a Show Dock in Apps: Off \u2192 On");
    // A slider has no label of its own: its group names it.
    EXPECT_EQ(line("com.veltram.nimbraprefs.tovin", "appNameFontSize", nullptr, 14.5), "Tovin \u203a App Name \u203a Font Size: 13 \u2192 14.5");
    EXPECT_EQ(line("com.veltram.nimbraprefs.time", "time1LabelFormat", "h:mm", ""),
              "Status Bar \u203a Time \u203a Primary Time Style \u203a Format: \u201ch:mm\u201d \u2192 Empty");
    EXPECT_EQ(line("com.veltram.nimbraprefs.tovin.colors", "appNameColor", "#8E8E93", "#FF000080"),
              "Tovin \u203a App Name \u203a App Name Color: #8E8E93 \u2192 #FF000080");
    // An app list by the row that opens its picker.
    EXPECT_EQ(line("com.veltram.nimbraprefs.cpuinfo.blackListedApps", "blackListedApps", nullptr, Json::array({"com.apple.Music", "com.apple.mobilesafari"})),
              "CPU Info \u203a Visibility \u203a Select Apps: No Apps \u2192 2 Apps");
    // A value the row does not offer is shown as it is; one that looks the same says so.
    EXPECT_EQ(line("com.veltram.nimbraprefs.homescreen", "dockType", 1, 7), "Home Screen \u203a Dock \u203a Style: Modern \u2192 7");
    EXPECT_EQ(line("com.veltram.nimbraprefs.homescreen", "dockType", nullptr, 0), "Home Screen \u203a Dock \u203a Style: stays Default");
}

TEST(ChangeWords, AValueNoPageShowsIsNamedByItsGroupNeverItsDomain)
{
    EXPECT_EQ(line("com.veltram.nimbraprefs.homescreen", "dockLegacyKey", nullptr, 5), "Home Screen settings: dockLegacyKey added");
    EXPECT_EQ(line("com.veltram.nimbraprefs.homescreen.colors", "oldColor", "#FFFFFF", "#000000"), "Home Screen settings: oldColor changed");
    EXPECT_EQ(line("com.veltram.nimbraprefs.homescreen", "dockLegacyKey", 5, nullptr), "Home Screen settings: dockLegacyKey removed");
    EXPECT_EQ(line("com.veltram.nimbraprefs.unknowngroup", "thing", 1, 2), "Nimbra settings: thing changed");
}

TEST(ChangeWords, APictureIsNamedByItsRow)
{
    Json added = words().describe(Json{{"picture", "/var/jb/var/mobile/Library/Nimbra/ControlCenterBackgroundLight.png"}, {"old", nullptr}, {"new", 20480}});
    EXPECT_EQ(added["text"], "Control Center \u203a Light Mode Image: picture added");
    EXPECT_EQ(added["from"], "No Picture");
    EXPECT_EQ(added["to"], "Picture (20 KB)");
    Json replaced = words().describe(Json{{"picture", "ControlCenterBackgroundLight"}, {"old", 100}, {"new", 2048}});
    EXPECT_EQ(replaced["text"], "Control Center \u203a Light Mode Image: picture replaced");
    EXPECT_EQ(replaced["from"], "Picture (under 1 KB)");
    Json unknown = words().describe(Json{{"picture", "/var/jb/var/mobile/Library/Nimbra/Leftover.png"}, {"old", nullptr}, {"new", 10}});
    EXPECT_EQ(unknown["text"], "A picture no page shows (\u201cLeftover\u201d): picture added");
    EXPECT_EQ(unknown["where"], "Pictures");
    EXPECT_EQ(added["where"], "Control Center");
    EXPECT_EQ(added["setting"], "Light Mode Image");
}

TEST(ChangeWords, EveryStoredRowOfEveryReachedPageHasItsOwnWords)
{
    SearchIndex index(test::resourcesDir());
    std::set<std::string> pages;
    std::size_t rows = 0;
    for (auto& entry : index.entries()) {
        if (!pages.insert(entry.page).second)
            continue;
        auto loaded = PSPageDefinition::read(test::resourcesDir(), NIMPageCatalog::find(entry.page)->description().definition);
        ASSERT_TRUE(loaded.definition) << entry.page;
        for (auto& item : loaded.definition->items()) {
            PlistValue row(*item);
            const std::string& domain = row["defaults"].stringValue();
            const std::string& key = row["key"].stringValue();
            if (domain.empty() || key.empty())
                continue;
            ++rows;
            Json described = words().describe(Json{{"domain", domain}, {"key", key}, {"old", nullptr}, {"new", true}});
            EXPECT_TRUE(described["setting"].is_string()) << entry.page << " " << key;
            std::string text = described["text"];
            EXPECT_EQ(text.find("com.veltram"), std::string::npos) << text;
            EXPECT_EQ(text.find(key + ":"), std::string::npos) << text;
        }
    }
    EXPECT_GT(rows, 800u);
}
