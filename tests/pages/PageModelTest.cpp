// Every page under random sequences of what a user and the rest of the system do: each governing
// key driven through its values (both booleans, every listed value, one value outside the list) by
// the page's own rows, by another process writing the domain, by reloads, and by leaving the page
// and opening it again. After every step the shown rows must satisfy what holds on every page:
//
//   - no row is shown twice;
//   - every shown row comes from the page's definition;
//   - what a rebuild shows (a reload, or the page opened afresh) depends only on what is stored;
//   - the table's insert, remove and reload events explain exactly how the shown rows changed.
//
// The sequences are seeded, so a run is repeatable. NIMBRA_MODEL_SEQUENCES (sequences per page,
// default 30), NIMBRA_MODEL_STEPS (steps per sequence, default 60), NIMBRA_MODEL_SEED (default 1)
// and NIMBRA_MODEL_SECONDS (keep starting new sequences on each page until that many seconds have
// passed) make longer runs by hand. A failure prints the steps as a `nimbra-prefs script` that
// replays them on a fresh root.

#include "pages/PageTestSupport.h"

#include "frame/NIMCollapsibleListController.h"
#include "frame/NIMPageCatalog.h"
#include "host/JsonValue.h"
#include "platform/HBPreferences.h"
#include "platform/PSPageDefinition.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace {

long envNumber(const char* name, long fallback)
{
    const char* text = std::getenv(name);
    if (!text || !*text)
        return fallback;
    char* end = nullptr;
    long value = std::strtol(text, &end, 10);
    return (end && *end == '\0' && value >= 0) ? value : fallback;
}

/// A key the model drives, the domain its rows store into, and the values it takes.
struct DrivenKey {
    std::string key;
    std::string domain;
    std::vector<PlistValue> values;
};

std::string scriptValue(const PlistValue& value)
{
    if (value.isBoolean())
        return value.boolValue() ? "true" : "false";
    if (value.kind() == PlistValue::Kind::Integer)
        return std::to_string(value.integerValue());
    if (value.kind() == PlistValue::Kind::Real) {
        std::ostringstream text;
        text << value.doubleValue();
        std::string shown = text.str();
        return shown.find('.') == std::string::npos ? shown + ".0" : shown;
    }
    return toJson(value).dump();
}

bool sameValue(const PlistValue& a, const PlistValue& b)
{
    return toJson(a) == toJson(b);
}

void addValue(std::vector<PlistValue>& values, PlistValue value)
{
    for (auto& known : values)
        if (sameValue(known, value))
            return;
    values.push_back(std::move(value));
}

/// What the model knows of a page before driving it.
struct PageModel {
    std::string className;
    const PageDescription* page = nullptr;
    /// Ids the definition holds, with how often.
    std::map<std::string, int> definedIds;
    /// Rows the page says it may show twice.
    std::set<std::string> mayShowTwice;
    /// The domains whose contents a rebuild may read.
    std::set<std::string> domains;
    std::vector<DrivenKey> keys;
};

PageModel modelOf(const NIMPageEntry& entry)
{
    PageModel model;
    model.className = entry.className;
    model.page = &entry.description();
    const PageDescription& page = *model.page;
    for (auto& id : page.mayShowTwice())
        model.mayShowTwice.insert(id);
    if (!page.domain.empty())
        model.domains.insert(page.domain);
    for (auto& domain : page.otherDomains)
        model.domains.insert(domain);

    std::map<std::string, DrivenKey> byKey;
    auto driven = [&](const std::string& key, const std::string& domain) -> DrivenKey& {
        DrivenKey& entry = byKey[key];
        entry.key = key;
        if (entry.domain.empty())
            entry.domain = domain;
        return entry;
    };

    auto loaded = PSPageDefinition::named(page.definition);
    if (loaded.definition) {
        for (auto& item : loaded.definition->items()) {
            auto field = [&](const char* name) {
                auto found = item->find(name);
                return found == item->end() ? PlistValue() : found->second;
            };
            if (field("id").isString())
                ++model.definedIds[field("id").stringValue()];
            std::string key = field("key").isString() ? field("key").stringValue() : std::string();
            std::string domain = field("defaults").isString() ? field("defaults").stringValue() : std::string();
            if (key.empty() || domain.empty())
                continue;
            model.domains.insert(domain);
            std::string cell = field("cell").isString() ? field("cell").stringValue() : std::string();
            if (cell == "PSSwitchCell") {
                DrivenKey& entry = driven(key, domain);
                addValue(entry.values, PlistValue(true));
                addValue(entry.values, PlistValue(false));
            } else if ((cell == "PSSegmentCell" || cell == "PSLinkListCell") && field("validValues").kind() == PlistValue::Kind::Array) {
                DrivenKey& entry = driven(key, domain);
                std::int64_t highest = 0;
                for (auto& value : field("validValues").arrayValue()) {
                    addValue(entry.values, value);
                    if (value.isNumber())
                        highest = std::max(highest, value.integerValue());
                }
                addValue(entry.values, PlistValue(static_cast<long long>(highest + 7)));
            }
        }
    }
    // The keys the rules read, with the values their conditions name and their neighbours.
    for (auto& rule : page.rules) {
        for (const std::string* key : {&rule.key, &rule.reloadKey}) {
            if (key->empty())
                continue;
            DrivenKey& entry = driven(*key, page.domain);
            if (entry.domain.empty())
                continue;
            if (rule.shownWhen.readsBoolean()) {
                addValue(entry.values, PlistValue(true));
                addValue(entry.values, PlistValue(false));
            } else {
                for (std::int64_t n = -1; n <= 6; ++n)
                    if (rule.shownWhen.holdsForInteger(n) != rule.shownWhen.holdsForInteger(n + 1) || n == 0)
                        addValue(entry.values, PlistValue(static_cast<long long>(n + 1)));
                addValue(entry.values, PlistValue(0LL));
                addValue(entry.values, PlistValue(99LL));
            }
        }
    }
    for (auto& [key, entry] : byKey)
        if (!entry.domain.empty() && !entry.values.empty())
            model.keys.push_back(std::move(entry));
    return model;
}

/// Replays a page's table events on the ids it showed before them.
struct EventReplay {
    std::vector<std::string> ids;
    std::vector<std::string> fullList;
    std::string problem;

    void apply(const nlohmann::ordered_json& event)
    {
        const std::string kind = event.value("event", "");
        if (kind == "reload") {
            ids = fullList;
        } else if (kind == "insert") {
            std::string after = event["after"];
            auto anchor = std::find(ids.begin(), ids.end(), after);
            if (anchor == ids.end()) {
                problem += "an insertion after " + after + ", which is not shown; ";
                return;
            }
            std::vector<std::string> added;
            for (auto& id : event["ids"])
                added.push_back(id.get<std::string>());
            ids.insert(anchor + 1, added.begin(), added.end());
        } else if (kind == "remove") {
            for (auto& id : event["ids"]) {
                auto found = std::find(ids.begin(), ids.end(), id.get<std::string>());
                if (found == ids.end()) {
                    problem += "a removal of " + id.get<std::string>() + ", which is not shown; ";
                    continue;
                }
                ids.erase(found);
            }
        }
    }
};

std::string join(const std::vector<std::string>& ids)
{
    std::string text;
    for (auto& id : ids)
        text += (text.empty() ? "" : ",") + id;
    return text;
}

/// One thing done to the page.
struct Step {
    enum class Kind { Set, Write, Reload, Reopen } kind = Kind::Reload;
    const DrivenKey* key = nullptr;
    PlistValue value;
};

/// Draws seeded random steps for a page.
std::vector<Step> randomSteps(const PageModel& model, std::uint64_t seed, int count)
{
    std::mt19937_64 random(seed);
    std::vector<Step> steps;
    for (int n = 0; n < count; ++n) {
        int choice = std::uniform_int_distribution<int>(0, 99)(random);
        Step step;
        if (choice < 10 || model.keys.empty()) {
            step.kind = Step::Kind::Reload;
        } else if (choice < 17) {
            step.kind = Step::Kind::Reopen;
        } else {
            step.kind = choice < 45 ? Step::Kind::Write : Step::Kind::Set;
            step.key = &model.keys[std::uniform_int_distribution<std::size_t>(0, model.keys.size() - 1)(random)];
            step.value = step.key->values[std::uniform_int_distribution<std::size_t>(0, step.key->values.size() - 1)(random)];
        }
        steps.push_back(std::move(step));
    }
    return steps;
}

/// Runs steps on a page in a session of its own, checking every invariant after each; the first
/// broken one ends the run.
class PageModelRun {
public:
    explicit PageModelRun(const PageModel& model)
        : _model(model)
    {
        Session::Options options;
        options.root = _root.path();
        options.resources = test::resourcesDir();
        _session = std::make_unique<Session>(options);
        _session->open("NIMRootListController");
        _fullList = fullList();
    }

    /// Starts from nothing stored, with the page opened on the root page, and runs steps. False
    /// when an invariant broke (failure() says which, script() what led there).
    bool run(const std::vector<Step>& steps)
    {
        _script.clear();
        if (_pageOpen) {
            _session->back();
            _pageOpen = false;
        }
        for (auto& domain : _model.domains)
            HBPreferences::preferencesForIdentifier(domain)->removeAllObjects();
        if (!open())
            return false;
        for (auto& step : steps)
            if (!this->step(step))
                return false;
        return true;
    }

    const std::string& failure() const { return _failure; }
    std::string script() const
    {
        std::string text = "  open NIMRootListController\n";
        for (auto& line : _script)
            text += "  " + line + "\n";
        return text;
    }

private:
    std::vector<nlohmann::ordered_json> events()
    {
        _session->commit();
        std::vector<nlohmann::ordered_json> all;
        auto drained = _session->events();
        for (auto& event : drained["events"])
            all.push_back(event);
        return all;
    }

    std::vector<std::string> shown()
    {
        std::vector<std::string> ids;
        auto shownNow = _session->show();
        for (auto& id : shownNow["ids"])
            ids.push_back(id.get<std::string>());
        return ids;
    }

    /// The page's rows as a rebuild makes them before any are removed.
    std::vector<std::string> fullList()
    {
        _session->open(_model.className);
        _session->topPage()->PSListController::reloadSpecifiers();
        auto ids = shown();
        _session->back();
        events();
        return ids;
    }

    std::string snapshot()
    {
        nlohmann::ordered_json stored = nlohmann::ordered_json::object();
        for (auto& domain : _model.domains)
            stored[domain] = toJson(PlistValue(HBPreferences::preferencesForIdentifier(domain)->dictionaryRepresentation()));
        return stored.dump();
    }

    bool fail(const std::string& what)
    {
        _failure = what + "\nshown: " + join(shown());
        return false;
    }

    /// Opens the page on the root page; what it shows must be what the same stored values showed
    /// before.
    bool open()
    {
        _script.push_back("open " + _model.className);
        _session->open(_model.className);
        _pageOpen = true;
        events();
        return checkRows() && checkRebuild("opening the page");
    }

    bool step(const Step& step)
    {
        auto before = shown();
        std::string what;
        switch (step.kind) {
        case Step::Kind::Reload:
            what = "reload";
            _session->reload();
            break;
        case Step::Kind::Reopen:
            _script.push_back("back");
            _session->back();
            _pageOpen = false;
            events();
            return open();
        case Step::Kind::Set:
            try {
                _session->set(step.key->key, step.value);
                what = "set " + step.key->key + " " + scriptValue(step.value);
                break;
            } catch (const CommandError&) {
                // The key's row is not shown, or is disabled: the value comes from elsewhere.
            }
            [[fallthrough]];
        case Step::Kind::Write:
            _session->write(step.key->domain, step.key->key, step.value);
            what = "write " + step.key->domain + " " + step.key->key + " " + scriptValue(step.value);
            break;
        }
        _script.push_back(what);
        EventReplay replay{before, _fullList, {}};
        for (auto& event : events())
            replay.apply(event);
        auto after = shown();
        if (!replay.problem.empty())
            return fail("after `" + what + "` the events name " + replay.problem);
        if (replay.ids != after)
            return fail("after `" + what + "` the events explain " + join(replay.ids));
        if (!checkRows())
            return false;
        if (step.kind == Step::Kind::Reload)
            return checkRebuild("a reload");
        return true;
    }

    /// No row twice, and only rows of the definition.
    bool checkRows()
    {
        std::set<const PSSpecifier*> objects;
        std::map<std::string, int> counts;
        for (auto& row : _session->topPage()->specifiers()) {
            if (_model.mayShowTwice.contains(row->identifier()))
                continue;
            if (!objects.insert(row.get()).second)
                return fail("the row " + (row->identifier().empty() ? row->name() : row->identifier()) + " is shown twice");
            if (!row->identifier().empty())
                ++counts[row->identifier()];
        }
        for (auto& [id, count] : counts) {
            auto defined = _model.definedIds.find(id);
            int built = static_cast<int>(std::count(_fullList.begin(), _fullList.end(), id));
            if (defined == _model.definedIds.end() && built == 0)
                return fail("the row " + id + " is not in the page's definition");
            if (count > std::max(built, defined == _model.definedIds.end() ? 0 : defined->second))
                return fail("the row " + id + " is shown " + std::to_string(count) + " times");
        }
        return true;
    }

    /// A rebuild shows what every earlier rebuild on the same stored values showed.
    bool checkRebuild(const std::string& how)
    {
        auto ids = shown();
        auto [known, fresh] = _rebuilds.try_emplace(snapshot(), ids, how);
        if (!fresh && known->second.first != ids)
            return fail(how + " shows other rows than " + known->second.second + " did on the same stored values (" +
                        join(known->second.first) + ")");
        return true;
    }

    const PageModel& _model;
    test::TempDir _root{test::memoryTempParent()};
    std::unique_ptr<Session> _session;
    std::vector<std::string> _fullList;
    bool _pageOpen = false;
    std::vector<std::string> _script;
    std::string _failure;
    /// Stored values -> the rows a rebuild showed on them, and which rebuild that was.
    std::map<std::string, std::pair<std::vector<std::string>, std::string>> _rebuilds;
};

/// The shortest sequence found, by leaving steps out one at a time, that still breaks an invariant
/// in a session of its own.
std::vector<Step> shrink(const PageModel& model, std::vector<Step> steps)
{
    auto fails = [&](const std::vector<Step>& candidate) { return !PageModelRun(model).run(candidate); };
    for (bool shorter = true; shorter;) {
        shorter = false;
        for (std::size_t i = steps.size(); i-- > 0;) {
            std::vector<Step> candidate = steps;
            candidate.erase(candidate.begin() + static_cast<std::ptrdiff_t>(i));
            if (fails(candidate)) {
                steps = std::move(candidate);
                shorter = true;
            }
        }
    }
    return steps;
}

std::vector<std::string> pageNames()
{
    std::vector<std::string> names;
    for (auto& entry : NIMPageCatalog::all())
        names.push_back(entry.className);
    return names;
}

class PageModel_ : public testing::TestWithParam<std::string> {};

TEST_P(PageModel_, EveryStepKeepsTheShownRowsTrue)
{
    const NIMPageEntry* entry = NIMPageCatalog::find(GetParam());
    ASSERT_NE(entry, nullptr);
    long sequences = envNumber("NIMBRA_MODEL_SEQUENCES", 30);
    long steps = envNumber("NIMBRA_MODEL_STEPS", 60);
    long seed = envNumber("NIMBRA_MODEL_SEED", 1);
    long seconds = envNumber("NIMBRA_MODEL_SECONDS", 0);

    // The model reads the definition in a process of its own.
    std::unique_ptr<PageModelRun> run;
    PageModel model;
    {
        test::TempDir scratch(test::memoryTempParent());
        Session reader({.root = scratch.path(), .resources = test::resourcesDir()});
        model = modelOf(*entry);
    }
    run = std::make_unique<PageModelRun>(model);
    // FNV-1a of the page's name, so that every page has its own sequences.
    std::uint64_t base = 1469598103934665603ull;
    for (unsigned char c : GetParam())
        base = (base ^ c) * 1099511628211ull;
    base ^= static_cast<std::uint64_t>(seed) * 0x9e3779b97f4a7c15ull;
    auto started = std::chrono::steady_clock::now();
    for (long n = 0; n < sequences || (seconds > 0 && std::chrono::steady_clock::now() - started < std::chrono::seconds(seconds)); ++n) {
        std::uint64_t sequenceSeed = base + static_cast<std::uint64_t>(n);
        auto drawn = randomSteps(model, sequenceSeed, static_cast<int>(steps));
        if (run->run(drawn))
            continue;
        auto shortest = shrink(model, drawn);
        PageModelRun replay(model);
        replay.run(shortest);
        FAIL() << GetParam() << " (sequence seed " << sequenceSeed << ", " << drawn.size() << " steps, shortened to "
               << shortest.size() << "): " << replay.failure() << "\nsteps, as a script on a fresh root:\n" << replay.script();
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPage, PageModel_, testing::ValuesIn(pageNames()),
                         [](const testing::TestParamInfo<std::string>& info) { return info.param; });

}  // namespace
