// `script` and `serve` are two front ends of one program: the same gestures, given as script lines
// and as requests to the browser API, show the same rows with the same values after every step and
// leave the same files, byte for byte.

#include "RunningServer.h"
#include "TestSupport.h"

#include "platform/UIImage.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>


namespace fs = std::filesystem;

namespace {

using Json = nlohmann::json;

/// One gesture: as a script line, and as a request (path, body, content type).
struct Step {
    std::string line;
    std::string path;
    std::string body;
    std::string type = "application/json";
};

Step gesture(const std::string& line, const std::string& path, const Json& body)
{
    return {line, path, body.dump()};
}

/// What a screen shows of each row: its id, label, value and whether it is enabled.
Json shownRows(const Json& rows)
{
    Json shown = Json::array();
    for (auto& row : rows)
        shown.push_back({{"id", row["properties"].value("id", "")},
                         {"label", row["label"]},
                         {"value", row.contains("value") ? row["value"] : Json()},
                         {"enabled", row["enabled"]}});
    return shown;
}

void runBoth(const std::string& name, const std::vector<Step>& steps)
{
    SCOPED_TRACE(name);
    // The script: each gesture followed by `rows`, from the root page as the browser starts.
    test::TempDir scriptRoot;
    std::string script = "open NIMRootListController\n";
    for (auto& step : steps)
        script += step.line + "\nrows\n";
    auto run = test::runScript({"--root", scriptRoot.path().string()}, script);
    ASSERT_EQ(run.status, 0) << run.errors << (run.lines.empty() ? Json() : run.lines.back()).dump();
    ASSERT_EQ(run.lines.size(), steps.size());

    test::RunningServer server;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        SCOPED_TRACE(steps[i].line);
        auto answer = server.client(20).Post(steps[i].path.c_str(), steps[i].body, steps[i].type.c_str());
        ASSERT_TRUE(answer);
        ASSERT_EQ(answer->status, 200) << answer->body;
        Json state = Json::parse(answer->body)["state"];
        EXPECT_EQ(state["page"]["page"], run.lines[i]["page"]);
        EXPECT_EQ(shownRows(state["page"]["rows"]), shownRows(run.lines[i]["rows"]));
    }
    auto fromScript = test::storedFiles(scriptRoot.path());
    auto fromServer = test::storedFiles(server.root.path());
    ASSERT_FALSE(fromScript.empty());
    EXPECT_EQ(fromScript.size(), fromServer.size());
    for (auto& [path, bytes] : fromScript) {
        auto other = fromServer.find(path);
        ASSERT_NE(other, fromServer.end()) << path << " is stored by script only";
        EXPECT_EQ(bytes, other->second) << path << " differs";
    }
}

}  // namespace

TEST(FrontEndsAgree, SlidersSegmentsAndSwitches)
{
    runBoth("Tovin background",
            {
                gesture("open NIMTovinBackgroundPrefsListController", "/api/open", {{"class", "NIMTovinBackgroundPrefsListController"}}),
                // An integer typed into a slider is stored as the slider's real by both.
                gesture("set bannerCornerRadius 5", "/api/set", {{"key", "bannerCornerRadius"}, {"value", 5}}),
                gesture("set backgroundOpacity 0.25", "/api/set", {{"key", "backgroundOpacity"}, {"value", 0.25}}),
                gesture("set backgroundColorType 1", "/api/set", {{"key", "backgroundColorType"}, {"value", 1}}),
                gesture("set blurBackground true", "/api/set", {{"key", "blurBackground"}, {"value", true}}),
                gesture("reload", "/api/reload", Json::object()),
                gesture("set backgroundColorType 0", "/api/set", {{"key", "backgroundColorType"}, {"value", 0}}),
            });
}

TEST(FrontEndsAgree, RootSwitchAppPickerAndLinks)
{
    runBoth("root, Battery Line visibility and its app picker",
            {
                gesture("set nimbraEnabled true", "/api/set", {{"key", "nimbraEnabled"}, {"value", true}}),
                gesture("open NIMBatteryLineVisibilityPrefsListController", "/api/open",
                        {{"class", "NIMBatteryLineVisibilityPrefsListController"}}),
                gesture("set visibility 2", "/api/set", {{"key", "visibility"}, {"value", 2}}),
                gesture("set enableBlackListedApps true", "/api/set", {{"key", "enableBlackListedApps"}, {"value", true}}),
                gesture("tap topLevelChild8Child", "/api/tap", {{"id", "topLevelChild8Child"}}),
                gesture("pick com.apple.AppStore com.apple.Health", "/api/pick", {{"bundleIDs", {"com.apple.AppStore", "com.apple.Health"}}}),
                gesture("pick com.apple.AppStore", "/api/pick", {{"bundleIDs", {"com.apple.AppStore"}}}),
                gesture("back", "/api/back", Json::object()),
                gesture("set visibility 1", "/api/set", {{"key", "visibility"}, {"value", 1}}),
                gesture("back", "/api/back", Json::object()),
                gesture("set nimbraEnabled false", "/api/set", {{"key", "nimbraEnabled"}, {"value", false}}),
            });
}

TEST(FrontEndsAgree, PicturesPickedAndRemoved)
{
    test::TempDir folder;
    std::vector<std::uint8_t> pixels(16 * 8 * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint8_t>(i * 7);
    std::string png = UIImagePNGRepresentation(UIImage(16, 8, pixels));
    fs::path file = folder / "picked.png";
    test::writeFile(file, png);
    runBoth("Control Center background picture",
            {
                gesture("open NIMControlCenterRootPrefsListController", "/api/open", {{"class", "NIMControlCenterRootPrefsListController"}}),
                gesture("set enabled true", "/api/set", {{"key", "enabled"}, {"value", true}}),
                gesture("set backgroundStyle 2", "/api/set", {{"key", "backgroundStyle"}, {"value", 2}}),
                gesture("tap backgroundImageChild1", "/api/tap", {{"id", "backgroundImageChild1"}}),
                {"image \"" + file.string() + "\"", "/api/image", png, "image/png"},
                gesture("tap backgroundImageChild2", "/api/tap", {{"id", "backgroundImageChild2"}}),
                {"image \"" + file.string() + "\"", "/api/image", png, "image/png"},
                // A picker cancelled keeps the stored picture.
                gesture("tap backgroundImageChild1", "/api/tap", {{"id", "backgroundImageChild1"}}),
                gesture("cancel", "/api/cancel", Json::object()),
            });
}
