// `serve` with a session per browser tab: independent stacks over one root, the bound on sessions
// (least recently used dropped, then refused with a clear answer), gestures answered with their
// events and state, and requests for events that wait until something happens.

#include "RunningServer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using Json = nlohmann::json;

struct Tab {
    const test::RunningServer& server;
    std::string id;
    /// The loaded page the requests come from ("": they do not say).
    std::string client = {};

    httplib::Headers headers() const
    {
        httplib::Headers headers{{"X-Nimbra-Session", id}};
        if (!client.empty())
            headers.emplace("X-Nimbra-Client", client);
        return headers;
    }
    /// Status and JSON answer of a request in this tab.
    std::pair<int, Json> post(const std::string& path, const Json& body = Json::object()) const
    {
        auto answer = server.client().Post(path.c_str(), headers(), body.dump(), "application/json");
        if (!answer)
            return {0, nullptr};
        return {answer->status, Json::parse(answer->body)};
    }
    std::pair<int, Json> get(const std::string& path, int seconds = 5) const
    {
        auto answer = server.client(seconds).Get(path.c_str(), headers());
        if (!answer)
            return {0, nullptr};
        return {answer->status, Json::parse(answer->body)};
    }
    std::size_t depth() const { return get("/api/state").second["stack"].size(); }
};

}  // namespace

TEST(ServerSessions, TabsHaveTheirOwnStacksOverOneRoot)
{
    test::RunningServer server;
    Tab a{server, "tab-aaaaaaaa"}, b{server, "tab-bbbbbbbb"};
    ASSERT_EQ(a.post("/api/session", {{"id", a.id}}).first, 200);
    ASSERT_EQ(b.post("/api/session", {{"id", b.id}}).first, 200);

    auto [status, opened] = a.post("/api/open?since=0", {{"class", "NIMNimbraSettingsPrefsListController"}});
    ASSERT_EQ(status, 200) << opened.dump();
    // The answer draws at once: the events it caused and the state after it.
    EXPECT_EQ(opened["state"]["stack"].size(), 2u);
    EXPECT_EQ(opened["seq"], opened["state"]["seq"]);
    bool pushed = false;
    for (auto& event : opened["events"])
        pushed = pushed || event["event"] == "push";
    EXPECT_TRUE(pushed) << opened["events"].dump();
    EXPECT_EQ(a.depth(), 2u);
    EXPECT_EQ(b.depth(), 1u);
    Tab main{server, ""};
    EXPECT_EQ(main.depth(), 1u) << "requests naming no session have the main one";

    // A value stored in one tab is seen by the other's next reload.
    ASSERT_EQ(a.post("/api/back").first, 200);
    ASSERT_EQ(a.post("/api/set", {{"key", "nimbraEnabled"}, {"value", true}}).first, 200);
    ASSERT_EQ(b.post("/api/reload").first, 200);
    Json stateOfB = b.get("/api/state").second;  // kept: the loop walks into it
    for (auto& row : stateOfB["page"]["rows"]) {
        if (row["properties"].value("key", "") == "nimbraEnabled") {
            EXPECT_EQ(row["value"], true);
        }
    }

    EXPECT_EQ(a.post("/api/session", {{"id", "short"}}).first, 400);
    EXPECT_EQ((Tab{server, "bad id!"}.get("/api/state").first), 400);
}

TEST(ServerSessions, TheLeastRecentlyUsedSessionIsDroppedAndThenRefused)
{
    WebServer::Options options;
    options.sessionLimit = 2;
    test::RunningServer server(options);
    Tab first{server, "tab-11111111"}, second{server, "tab-22222222"}, third{server, "tab-33333333"};
    ASSERT_EQ(first.post("/api/session", {{"id", first.id}}).first, 200);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_EQ(second.post("/api/session", {{"id", second.id}}).first, 200);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_EQ(first.get("/api/state").first, 200);  // the first is used again: the second is now the oldest
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_EQ(third.post("/api/session", {{"id", third.id}}).first, 200);

    EXPECT_EQ(first.get("/api/state").first, 200);
    EXPECT_EQ(third.get("/api/state").first, 200);
    auto [status, refused] = second.post("/api/tap", {{"index", 0}});
    EXPECT_EQ(status, 410);
    EXPECT_EQ(refused["session"], "unknown");
    EXPECT_NE(refused["error"].get<std::string>().find("session has ended"), std::string::npos);
    EXPECT_EQ((Tab{server, "tab-never-was"}.get("/api/events?since=0").first), 410);
    // Starting it again gives a fresh session on the root page.
    auto [again, fresh] = second.post("/api/session", {{"id", second.id}});
    EXPECT_EQ(again, 200);
    EXPECT_EQ(fresh["state"]["stack"].size(), 1u);
}

TEST(ServerSessions, ARequestForEventsWaitsUntilOneHappens)
{
    test::RunningServer server;
    Tab tab{server, "tab-waiting"}, other{server, "tab-other-1"};
    ASSERT_EQ(tab.post("/api/session", {{"id", tab.id}}).first, 200);
    ASSERT_EQ(other.post("/api/session", {{"id", other.id}}).first, 200);
    std::uint64_t seq = tab.get("/api/state").second["seq"];

    // Nothing happens: the request answers after its wait, with no events.
    auto [quiet, nothing] = tab.get("/api/events?since=" + std::to_string(seq) + "&wait=0.3");
    EXPECT_EQ(quiet, 200);
    EXPECT_TRUE(nothing["events"].empty());

    // A waiting request of a page is woken by what happens without a gesture: here the respring
    // button turning back from "Sure?" 3 seconds after its tap. The page's own tap does not wake it
    // (the tap's answer carried its events), nor do the gestures of another tab.
    Tab page{server, tab.id, "page-load-1"};
    ASSERT_EQ(page.post("/api/open", {{"class", "NIMBatteryLineColorsPrefsListController"}}).first, 200);
    seq = page.get("/api/state").second["seq"];
    std::pair<int, Json> woken;
    std::thread waiting([&] { woken = page.get("/api/events?state=1&wait=20&since=" + std::to_string(seq), 25); });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ASSERT_EQ(other.post("/api/open", {{"class", "NIMNimbraSettingsPrefsListController"}}).first, 200);
    auto [tapped, answer] = page.post("/api/call?since=" + std::to_string(seq), {{"name", "respring"}});
    ASSERT_EQ(tapped, 200);
    std::uint64_t answered = answer["seq"];
    waiting.join();
    ASSERT_EQ(woken.first, 200);
    EXPECT_GT(woken.second["seq"].get<std::uint64_t>(), answered) << "woken by the tap's own events";
    std::vector<std::string> titles;
    for (auto& event : woken.second["events"])
        if (event["event"] == "button")
            titles.push_back(event["title"]);
    EXPECT_EQ(titles, (std::vector<std::string>{"Sure?", "Respring"}));

    // A gesture sent to the same session by anything but the waiting page wakes it with its events.
    seq = woken.second["seq"];
    std::thread waitingAgain([&] { woken = page.get("/api/events?state=1&wait=20&since=" + std::to_string(seq), 25); });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ASSERT_EQ(tab.post("/api/open", {{"class", "NIMSpecialThanksPrefsListController"}}).first, 200);
    waitingAgain.join();
    ASSERT_EQ(woken.first, 200);
    EXPECT_GT(woken.second["seq"].get<std::uint64_t>(), seq);
    EXPECT_EQ(woken.second["state"]["page"]["page"], "NIMSpecialThanksPrefsListController");
    EXPECT_EQ(tab.get("/api/events?wait=x").first, 400);
}

TEST(ServerSessions, TheStoredStampChangesWithEveryWriteFromAnywhere)
{
    test::RunningServer server;
    Tab a{server, "tab-aaaaaaaa"}, b{server, "tab-bbbbbbbb"};
    ASSERT_EQ(a.post("/api/session", {{"id", a.id}}).first, 200);
    ASSERT_EQ(b.post("/api/session", {{"id", b.id}}).first, 200);
    auto stamp = [&](const Tab& tab) {
        auto [status, body] = tab.get("/api/stored");
        EXPECT_EQ(status, 200) << body.dump();
        return body.value("stamp", std::string());
    };
    std::string first = stamp(a);
    ASSERT_EQ(first.size(), 16u);
    EXPECT_EQ(stamp(b), first) << "every tab sees the same files";
    EXPECT_EQ(stamp(a), first) << "asking changes nothing";

    // A gesture of another tab.
    ASSERT_EQ(b.post("/api/set", {{"key", "nimbraEnabled"}, {"value", true}}).first, 200);
    std::string second = stamp(a);
    EXPECT_NE(second, first);
    // Another process rewriting a domain file with the same size.
    auto run = test::runScript({"--root", server.root.path().string()}, "write com.veltram.nimbraprefs nimbraEnabled false\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    std::string third = stamp(a);
    EXPECT_NE(third, second);
    // A file of another product is not the bundle's.
    test::writeFile(test::under(server.root.path(), "/var/jb/var/mobile/Library/Preferences/com.example.other.plist"), "x");
    EXPECT_EQ(stamp(a), third);
    // A picture is.
    test::writeFile(test::under(server.root.path(), "/var/jb/var/mobile/Library/Nimbra/Picture.png"), "x");
    EXPECT_NE(stamp(a), third);

    EXPECT_EQ((Tab{server, "tab-unknown0"}.get("/api/stored").first), 410);
}

TEST(ServerSessions, APageBelowTheTopTakesAChangeOfItsOwnRow)
{
    test::RunningServer server;
    Tab a{server, "tab-aaaaaaaa"};
    ASSERT_EQ(a.post("/api/session", {{"id", a.id}}).first, 200);
    ASSERT_EQ(a.post("/api/open", {{"class", "NIMNimbraSettingsPrefsListController"}}).first, 200);
    auto rootValue = [](const Json& state) {
        for (auto& row : state["root"])
            if (row["key"] == "nimbraEnabled")
                return row["value"];
        return Json("missing");
    };
    auto rootLinks = [](const Json& state) {
        std::size_t links = 0;
        for (auto& row : state["root"])
            links += !row["detail"].get<std::string>().empty();
        return links;
    };
    Json before = a.get("/api/state").second;
    ASSERT_TRUE(before.contains("root")) << "a page is pushed over the root";

    auto [status, answer] = a.post("/api/set", {{"key", "nimbraEnabled"}, {"value", true}, {"level", 0}});
    ASSERT_EQ(status, 200) << answer.dump();
    EXPECT_EQ(answer["state"]["stack"].size(), 2u) << "the page on top stays";
    EXPECT_EQ(rootValue(answer["state"]), true);
    EXPECT_GT(rootLinks(answer["state"]), rootLinks(before)) << "the root shows its group links";

    answer = a.post("/api/set", {{"key", "nimbraEnabled"}, {"value", false}, {"level", 0}}).second;
    EXPECT_EQ(rootValue(answer["state"]), false);
    EXPECT_EQ(rootLinks(answer["state"]), rootLinks(before));

    EXPECT_EQ(a.post("/api/set", {{"key", "nimbraEnabled"}, {"value", true}, {"level", 5}}).first, 400);
    EXPECT_EQ(a.post("/api/set", {{"key", "nimbraEnabled"}, {"value", true}}).first, 404) << "the top page has no such row";
    ASSERT_EQ(a.post("/api/back").first, 200);
    EXPECT_FALSE(a.get("/api/state").second.contains("root")) << "the root page is the top";
}

TEST(ServerSessions, APickAnswersTheRowsItChangedInTheListThePageDrew)
{
    test::RunningServer server;
    Tab tab{server, "tab-picker01"};
    ASSERT_EQ(tab.post("/api/session", {{"id", tab.id}}).first, 200);
    ASSERT_EQ(tab.post("/api/open", {{"class", "NIMBatteryLineVisibilityPrefsListController"}}).first, 200);
    ASSERT_EQ(tab.post("/api/set", {{"key", "visibility"}, {"value", 2}}).first, 200);
    ASSERT_EQ(tab.post("/api/set", {{"key", "enableBlackListedApps"}, {"value", true}}).first, 200);
    auto [status, opened] = tab.post("/api/tap", {{"id", "topLevelChild8Child"}});
    ASSERT_EQ(status, 200) << opened.dump();
    Json drawn = opened["state"];
    ASSERT_TRUE(drawn["picker"].is_object()) << "the app picker is on top";
    Json rows = drawn["page"]["rows"];
    ASSERT_GT(rows.size(), 3u);
    std::size_t index = 0;
    while (index < rows.size() && !rows[index]["properties"].contains("bundleIdentifier"))
        ++index;
    ASSERT_LT(index, rows.size());
    std::string app = rows[index]["properties"]["bundleIdentifier"];

    // The page drew that state: the answer holds the one row the pick changed.
    auto [picked, delta] = tab.post("/api/pick?drawn=" + drawn["answer"].dump(), {{"bundleIDs", {app}}});
    ASSERT_EQ(picked, 200) << delta.dump();
    EXPECT_FALSE(delta["state"]["page"].contains("rows")) << "not the whole list";
    Json changed = delta["state"]["page"]["rowsChanged"];
    EXPECT_EQ(changed["base"], drawn["answer"]);
    ASSERT_EQ(changed["rows"].size(), 1u) << changed.dump();
    EXPECT_EQ(changed["rows"][0][0], index);
    EXPECT_EQ(changed["rows"][0][1]["value"], true);
    // Applied to the rows drawn, the change gives the session's rows.
    rows[index] = changed["rows"][0][1];
    EXPECT_EQ(rows, tab.get("/api/state").second["page"]["rows"]);

    // A page that drew another state (or does not say) gets the whole list.
    auto [again, whole] = tab.post("/api/pick?drawn=" + drawn["answer"].dump(), {{"bundleIDs", {app}}});
    ASSERT_EQ(again, 200);
    EXPECT_FALSE(whole["state"]["page"].contains("rowsChanged"));
    EXPECT_EQ(whole["state"]["page"]["rows"].size(), rows.size());
    EXPECT_EQ(whole["state"]["page"]["rows"][index]["value"], false);
    auto [plain, full] = tab.post("/api/pick", {{"bundleIDs", {app}}});
    ASSERT_EQ(plain, 200);
    EXPECT_EQ(full["state"]["page"]["rows"].size(), rows.size());
}
