// The kinds of event: one list, the JSON the hosts send for each, and the page application's names
// for them.

#include "TestSupport.h"

#include "platform/EventLog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

template <std::size_t... Index>
std::vector<EventLog::Event> oneOfEachKind(std::index_sequence<Index...>)
{
    return {EventLog::Event(std::in_place_index<Index>)...};
}

std::vector<EventLog::Event> oneOfEachKind()
{
    return oneOfEachKind(std::make_index_sequence<std::variant_size_v<EventLog::Event>>());
}

std::vector<std::string> keys(const nlohmann::ordered_json& object)
{
    std::vector<std::string> names;
    for (auto& [name, value] : object.items())
        names.push_back(name);
    return names;
}

}  // namespace

TEST(Events, EveryKindHasItsOwnNameAndIsSentAsItsFieldsInOrder)
{
    auto& kinds = Events::kinds();
    auto events = oneOfEachKind();
    ASSERT_EQ(kinds.size(), events.size());
    std::set<std::string_view> names;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        EXPECT_TRUE(names.insert(kinds[i].name).second) << "two kinds are called " << kinds[i].name;
        EXPECT_EQ(Events::name(events[i]), kinds[i].name);
        auto json = EventLog::json(events[i]);
        ASSERT_TRUE(json.is_object());
        auto sent = keys(json);
        ASSERT_FALSE(sent.empty());
        EXPECT_EQ(sent.front(), "event");
        EXPECT_EQ(json["event"], std::string(kinds[i].name));
        // A field with no value may be left out, but what is sent comes in the listed order.
        std::size_t next = 0;
        for (std::size_t k = 1; k < sent.size(); ++k) {
            while (next < kinds[i].fields.size() && kinds[i].fields[next] != sent[k])
                ++next;
            EXPECT_LT(next, kinds[i].fields.size()) << kinds[i].name << " sends " << sent[k] << " out of order or unlisted";
        }
    }
}

TEST(Events, FieldsWithoutAValueAreLeftOutOrNullAsTheirKindSays)
{
    EXPECT_EQ(EventLog::json(Events::Error{.message = "m"}).dump(), R"({"event":"error","message":"m"})");
    EXPECT_EQ(EventLog::json(Events::Error{.message = "m", .path = "/p", .write = true}).dump(),
              R"({"event":"error","message":"m","path":"/p","write":true})");
    Events::Error notWritten{.message = "m", .write = false};
    Events::Error copy = notWritten;
    EXPECT_EQ(EventLog::json(copy).dump(), R"({"event":"error","message":"m","write":false})") << "a copy keeps a false field";
    EXPECT_EQ(EventLog::json(Events::Push{.className = "P"}).dump(), R"({"event":"push","class":"P"})");
    // An app picker without a limit names its limit as null.
    EXPECT_EQ(EventLog::json(Events::Push{.className = "A", .identifier = "d", .key = "k", .maxEnabled = std::optional<int>()}).dump(),
              R"({"event":"push","class":"A","identifier":"d","key":"k","maxEnabled":null})");
    EXPECT_EQ(EventLog::json(Events::Button{.title = "Apply"}).dump(), R"({"event":"button","title":"Apply","tint":null})");
    EXPECT_EQ(EventLog::json(Events::Button{.title = "", .tint = std::array<int, 4>{255, 0, 10, 255}}).dump(),
              R"({"event":"button","title":"","tint":[255,0,10,255]})");
    EXPECT_EQ(EventLog::json(Events::Insert{.ids = {"a", std::nullopt}, .after = "x", .animated = true}).dump(),
              R"({"event":"insert","ids":["a",null],"after":"x","animated":true})");
    EXPECT_EQ(EventLog::json(Events::Alert{.title = "T", .message = "", .actions = {{"OK", "cancel"}}}).dump(),
              R"({"event":"alert","title":"T","message":"","actions":[{"title":"OK","style":"cancel"}]})");
    EXPECT_EQ(EventLog::json(Events::Animate{.view = "v", .translationY = -3.5, .duration = 0.25}).dump(),
              R"({"event":"animate","view":"v","translationY":-3.5,"duration":0.25})");
}

TEST(Events, LogKeepsTheLatestAndSaysHowManyItForgot)
{
    EventLog log;
    for (int i = 0; i < 5; ++i)
        log.record(Events::Notify{std::to_string(i)});
    EXPECT_EQ(log.keepLatest(5), 0u);
    EXPECT_EQ(log.keepLatest(2), 3u);
    auto kept = log.drain();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(std::get<Events::Notify>(kept[0]).name, "3");
    EXPECT_EQ(std::get<Events::Notify>(kept[1]).name, "4");
    EXPECT_TRUE(log.pending().empty());
    EXPECT_EQ(log.keepLatest(0), 0u);
}

TEST(Events, PageApplicationNamesTheSameKinds)
{
    namespace fs = std::filesystem;
    fs::path web = fs::path(test::resourcesDir()) / "web";
    std::string source = test::readFile(web / "event-kinds.js");
    auto begin = source.find("export const EventKind = Object.freeze({");
    ASSERT_NE(begin, std::string::npos);
    auto end = source.find("});", begin);
    ASSERT_NE(end, std::string::npos);
    std::string block = source.substr(begin, end - begin);

    std::vector<std::string> names;
    std::set<std::string> constants;
    static const std::regex entry(R"(\n  (\w+): '(\w+)',)");
    for (auto it = std::sregex_iterator(block.begin(), block.end(), entry); it != std::sregex_iterator(); ++it) {
        std::string constant = (*it)[1], name = (*it)[2];
        std::string expected = name;
        expected[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(expected[0])));
        EXPECT_EQ(constant, expected) << "the constant of \"" << name << "\" is named after it";
        names.push_back(name);
        constants.insert(constant);
    }
    std::vector<std::string> defined;
    for (auto& kind : Events::kinds())
        defined.emplace_back(kind.name);
    EXPECT_EQ(names, defined) << "resources/web/event-kinds.js lists the kinds the program defines, in its order";

    // The modules name kinds only through these constants, and only constants that exist.
    static const std::regex use(R"(EventKind\.(\w+))");
    static const std::regex literal(R"(\.event\s*[!=]==?\s*['"`])");
    static const std::regex quotedCase(R"(case\s*['"`])");
    for (auto& file : fs::directory_iterator(web)) {
        if (file.path().extension() != ".js" || file.path().filename() == "event-kinds.js")
            continue;
        std::string text = test::readFile(file.path());
        for (auto it = std::sregex_iterator(text.begin(), text.end(), use); it != std::sregex_iterator(); ++it)
            EXPECT_TRUE(constants.contains((*it)[1])) << file.path().filename() << " uses EventKind." << (*it)[1];
        EXPECT_FALSE(std::regex_search(text, literal)) << file.path().filename() << " compares a kind with its words";
        if (text.find("switch (event.event)") != std::string::npos) {
            EXPECT_FALSE(std::regex_search(text, quotedCase)) << file.path().filename() << " tells kinds apart by their words";
        }
    }
}
