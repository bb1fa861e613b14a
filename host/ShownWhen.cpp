#include "host/ShownWhen.h"

#include "frame/NIMPageCatalog.h"
#include "host/JsonValue.h"
#include "host/Session.h"
#include "platform/AtomicFile.h"

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <unistd.h>

#include <cstdio>

#include <algorithm>
#include <mutex>
#include <set>

namespace fs = std::filesystem;

namespace {

using State = PageProbe::State;

/// More states than this for one row's deciders are not tried one by one.
constexpr std::size_t kMostCombinations = 4096;

std::string joined(const std::vector<std::string>& parts, const std::string& last)
{
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? last : ", ") + parts[i];
    return text;
}

/// A row's visibility over every combination of the values of some deciders (the others held
/// where they were), and the part of it still to be described.
class Table {
public:
    Table(std::vector<std::size_t> keys, std::vector<std::size_t> sizes)
        : _keys(std::move(keys))
        , _sizes(std::move(sizes))
    {
        std::size_t count = 1;
        for (auto size : _sizes)
            count *= size;
        _shown.assign(count, false);
        for (auto size : _sizes)
            _domain.emplace_back(size, true);
    }

    std::size_t keyCount() const { return _keys.size(); }
    std::size_t decider(std::size_t k) const { return _keys[k]; }
    std::size_t size() const { return _shown.size(); }
    /// The values of combination n, one per key.
    std::vector<std::size_t> tuple(std::size_t n) const
    {
        std::vector<std::size_t> values(_keys.size());
        for (std::size_t k = _keys.size(); k-- > 0;) {
            values[k] = n % _sizes[k];
            n /= _sizes[k];
        }
        return values;
    }
    std::size_t index(const std::vector<std::size_t>& values) const
    {
        std::size_t n = 0;
        for (std::size_t k = 0; k < _keys.size(); ++k)
            n = n * _sizes[k] + values[k];
        return n;
    }
    void set(std::size_t n, bool shown) { _shown[n] = shown; }
    bool shown(const std::vector<std::size_t>& values) const { return _shown[index(values)]; }

    /// The combinations still in play: every key within its domain.
    template <class Visit>
    void forEach(Visit visit) const
    {
        for (std::size_t n = 0; n < _shown.size(); ++n) {
            auto values = tuple(n);
            bool inside = true;
            for (std::size_t k = 0; k < values.size() && inside; ++k)
                inside = _domain[k][values[k]];
            if (inside)
                visit(values, _shown[n]);
        }
    }
    const std::vector<bool>& domain(std::size_t k) const { return _domain[k]; }
    void restrict(std::size_t k, std::vector<bool> domain) { _domain[k] = std::move(domain); }
    bool active(std::size_t k) const { return std::count(_domain[k].begin(), _domain[k].end(), true) > 1; }

private:
    std::vector<std::size_t> _keys;
    std::vector<std::size_t> _sizes;
    std::vector<bool> _shown;
    std::vector<std::vector<bool>> _domain;
};

/// The condition a table shows: first the deciders that decide by themselves (one of their values
/// is needed whatever the others hold), then, for what is left, either one of several deciders
/// alone or, failing that, alternatives of several together.
ShownWhen::Condition describe(Table& table)
{
    ShownWhen::Condition condition;
    bool anyShown = false;
    table.forEach([&](auto&, bool shown) { anyShown = anyShown || shown; });
    if (!anyShown) {
        condition.never = true;
        return condition;
    }
    for (bool narrowed = true; narrowed;) {
        narrowed = false;
        for (std::size_t k = 0; k < table.keyCount(); ++k) {
            if (!table.active(k))
                continue;
            std::vector<bool> allowed(table.domain(k).size(), false);
            table.forEach([&](const std::vector<std::size_t>& values, bool shown) {
                if (shown)
                    allowed[values[k]] = true;
            });
            if (allowed == table.domain(k))
                continue;
            // It decides by itself when, among its allowed values, the others decide alike.
            std::size_t first = static_cast<std::size_t>(std::find(allowed.begin(), allowed.end(), true) - allowed.begin());
            bool alike = true;
            table.forEach([&](const std::vector<std::size_t>& values, bool shown) {
                if (!alike || !allowed[values[k]])
                    return;
                auto same = values;
                same[k] = first;
                alike = table.shown(same) == shown;
            });
            if (!alike)
                continue;
            condition.all.push_back({table.decider(k), allowed});
            std::vector<bool> only(allowed.size(), false);
            only[first] = true;
            table.restrict(k, std::move(only));
            narrowed = true;
        }
    }
    bool always = true;
    table.forEach([&](auto&, bool shown) { always = always && shown; });
    if (always)
        return condition;

    // One of several deciders alone: each with the values that show the row whatever the others hold.
    std::vector<std::vector<bool>> enough(table.keyCount());
    for (std::size_t k = 0; k < table.keyCount(); ++k) {
        enough[k].assign(table.domain(k).size(), false);
        if (!table.active(k))
            continue;
        for (std::size_t v = 0; v < enough[k].size(); ++v) {
            if (!table.domain(k)[v])
                continue;
            bool all = true;
            table.forEach([&](const std::vector<std::size_t>& values, bool shown) {
                if (values[k] == v)
                    all = all && shown;
            });
            enough[k][v] = all;
        }
    }
    bool alternatives = true;
    table.forEach([&](const std::vector<std::size_t>& values, bool shown) {
        bool some = false;
        for (std::size_t k = 0; k < values.size(); ++k)
            some = some || enough[k][values[k]];
        alternatives = alternatives && some == shown;
    });
    if (alternatives) {
        for (std::size_t k = 0; k < table.keyCount(); ++k)
            if (std::find(enough[k].begin(), enough[k].end(), true) != enough[k].end())
                condition.any.push_back({{table.decider(k), enough[k]}});
        return condition;
    }

    // Alternatives of several together: each combination that shows the row, grown one value at a
    // time while every combination it covers shows the row.
    std::set<std::size_t> covered;
    table.forEach([&](const std::vector<std::size_t>& start, bool shown) {
        if (!shown || covered.contains(table.index(start)))
            return;
        std::vector<std::vector<bool>> box;
        for (std::size_t k = 0; k < start.size(); ++k) {
            box.emplace_back(table.domain(k).size(), false);
            box[k][start[k]] = true;
        }
        auto allShown = [&](const std::vector<std::vector<bool>>& candidate) {
            bool all = true;
            table.forEach([&](const std::vector<std::size_t>& values, bool shown) {
                bool inside = true;
                for (std::size_t k = 0; k < values.size() && inside; ++k)
                    inside = candidate[k][values[k]];
                if (inside)
                    all = all && shown;
            });
            return all;
        };
        for (std::size_t k = 0; k < start.size(); ++k)
            for (std::size_t v = 0; v < box[k].size(); ++v) {
                if (box[k][v] || !table.domain(k)[v])
                    continue;
                auto grown = box;
                grown[k][v] = true;
                if (allShown(grown))
                    box = std::move(grown);
            }
        std::vector<ShownWhen::Clause> term;
        for (std::size_t k = 0; k < start.size(); ++k)
            if (table.active(k) && box[k] != table.domain(k))
                term.push_back({table.decider(k), box[k]});
        table.forEach([&](const std::vector<std::size_t>& values, bool) {
            bool inside = true;
            for (std::size_t k = 0; k < values.size() && inside; ++k)
                inside = box[k][values[k]];
            if (inside)
                covered.insert(table.index(values));
        });
        condition.any.push_back(std::move(term));
    });
    return condition;
}

fs::path scratchParent()
{
    std::error_code ec;
    if (fs::is_directory("/dev/shm", ec) && ::access("/dev/shm", W_OK) == 0)
        return "/dev/shm";
    return fs::temp_directory_path();
}

}  // namespace

bool ShownWhen::Condition::holds(const State& state) const
{
    if (never)
        return false;
    auto holdsClause = [&](const Clause& clause) { return clause.allowed[state[clause.decider]]; };
    if (!std::all_of(all.begin(), all.end(), holdsClause))
        return false;
    if (any.empty())
        return true;
    return std::any_of(any.begin(), any.end(), [&](auto& term) { return std::all_of(term.begin(), term.end(), holdsClause); });
}

std::vector<const ShownWhen::Clause*> ShownWhen::Condition::clauses() const
{
    std::vector<const Clause*> list;
    for (auto& clause : all)
        list.push_back(&clause);
    for (auto& term : any)
        for (auto& clause : term)
            list.push_back(&clause);
    return list;
}

ShownWhen::Page ShownWhen::probe(PageProbe& probe)
{
    Page page;
    page.deciders = probe.deciders();
    const std::size_t rows = probe.ids().size(), deciders = page.deciders.size();

    // From the values shown while nothing is stored, one decider changed at a time; every state
    // that showed a row not seen shown before, or hid one not seen hidden before, is a starting
    // point too. While a row the page can detach was never seen both ways, two deciders at a time
    // as well, among those that change nothing alone (rows that two switches hide only together).
    State initial = probe.initial();
    std::vector<bool> seenShown = probe.shown(initial), seenHidden(rows);
    for (std::size_t r = 0; r < rows; ++r)
        seenHidden[r] = !seenShown[r];
    std::vector<State> starts{initial};
    auto tryState = [&](const State& next) {
        const std::vector<bool>& shown = probe.shown(next);
        bool fresh = false;
        for (std::size_t r = 0; r < rows; ++r) {
            std::vector<bool>& seen = shown[r] ? seenShown : seenHidden;
            if (!seen[r])
                fresh = true, seen[r] = true;
        }
        if (fresh)
            starts.push_back(next);
    };
    auto unsettled = [&] {
        for (std::size_t r = 0; r < rows; ++r)
            if (probe.detachable(r) && !(seenShown[r] && seenHidden[r]))
                return true;
        return false;
    };
    auto explore = [&](const State& start, bool pairs) {
        const std::vector<bool> shownAtStart = probe.shown(start);
        std::vector<std::size_t> inert;
        for (std::size_t k = 0; k < deciders; ++k) {
            bool changes = false;
            for (std::uint8_t v = 0; v < page.deciders[k].values.size(); ++v) {
                if (v == start[k])
                    continue;
                State next = start;
                next[k] = v;
                tryState(next);
                changes = changes || *probe.known(next) != shownAtStart;
            }
            if (!changes)
                inert.push_back(k);
        }
        for (std::size_t i = 0; pairs && i < inert.size() && unsettled(); ++i)
            for (std::size_t j = i + 1; j < inert.size(); ++j)
                for (std::uint8_t a = 0; a < page.deciders[inert[i]].values.size(); ++a)
                    for (std::uint8_t b = 0; b < page.deciders[inert[j]].values.size(); ++b) {
                        if (a == start[inert[i]] || b == start[inert[j]])
                            continue;
                        State next = start;
                        next[inert[i]] = a;
                        next[inert[j]] = b;
                        tryState(next);
                    }
    };
    for (std::size_t n = 0; n < starts.size(); ++n)
        explore(State(starts[n]), false);
    for (std::size_t n = 0; n < starts.size() && unsettled(); ++n)
        explore(State(starts[n]), true);
    std::vector<bool> seen = seenShown;

    // A decider matters to a row when changing it alone, between two states asked about, shows
    // or hides the row.
    std::vector<std::set<std::size_t>> matters(rows);
    std::vector<State> asked = probe.asked();
    for (auto& state : asked) {
        const std::vector<bool>& shown = *probe.known(state);
        for (std::size_t k = 0; k < deciders; ++k)
            for (std::uint8_t v = 0; v < page.deciders[k].values.size(); ++v) {
                if (v == state[k])
                    continue;
                State other = state;
                other[k] = v;
                const std::vector<bool>* otherShown = probe.known(other);
                if (!otherShown)
                    continue;
                for (std::size_t r = 0; r < rows; ++r)
                    if (shown[r] != (*otherShown)[r])
                        matters[r].insert(k);
            }
    }

    for (std::size_t r = 0; r < rows; ++r) {
        const std::string& id = probe.ids()[r];
        if (matters[r].empty()) {
            if (!seen[r])
                page.conditions[id].never = true;
            continue;
        }
        // Every combination of the deciders that matter, the others as in the first state that
        // showed the row.
        State context = initial;
        for (auto& state : asked)
            if ((*probe.known(state))[r]) {
                context = state;
                break;
            }
        // A decider outside them that, changed alone from one of those combinations, shows or
        // hides the row matters too: until there is none.
        std::set<std::size_t> keySet = matters[r];
        std::optional<Table> table;
        for (bool grown = true; grown;) {
            grown = false;
            std::vector<std::size_t> keys(keySet.begin(), keySet.end()), sizes;
            std::size_t combinations = 1;
            for (auto k : keys) {
                sizes.push_back(page.deciders[k].values.size());
                combinations *= sizes.back();
            }
            if (combinations > kMostCombinations) {
                table.reset();
                break;
            }
            table.emplace(keys, sizes);
            for (std::size_t n = 0; n < table->size(); ++n) {
                State state = context;
                auto values = table->tuple(n);
                for (std::size_t k = 0; k < keys.size(); ++k)
                    state[keys[k]] = static_cast<std::uint8_t>(values[k]);
                bool shown = probe.shows(state, r);
                table->set(n, shown);
                for (std::size_t k = 0; k < deciders; ++k) {
                    if (keySet.contains(k))
                        continue;
                    for (std::uint8_t v = 0; v < page.deciders[k].values.size(); ++v) {
                        if (v == state[k])
                            continue;
                        State other = state;
                        other[k] = v;
                        if (probe.shows(other, r) != shown) {
                            keySet.insert(k);
                            grown = true;
                            break;
                        }
                    }
                }
            }
        }
        if (!table)
            continue;
        Condition condition = describe(*table);
        if (condition.never || !condition.all.empty() || !condition.any.empty())
            page.conditions[id] = std::move(condition);
    }
    page.rebuilds = probe.rebuilds();
    return page;
}

const ShownWhen::Condition* ShownWhen::Page::condition(const std::string& id) const
{
    auto found = conditions.find(id);
    return found == conditions.end() ? nullptr : &found->second;
}

std::string ShownWhen::Page::clauseText(const Clause& clause) const
{
    const PageProbe::Decider& decider = deciders[clause.decider];
    if (decider.isSwitch)
        return decider.label + (clause.allowed[1] ? " is on" : " is off");
    std::vector<std::string> shown, hidden;
    for (std::size_t v = 0; v < decider.values.size(); ++v) {
        std::string title = !decider.titles[v].empty() ? decider.titles[v]
                          : decider.values[v].isString()  ? decider.values[v].stringValue()
                                                          : std::to_string(decider.values[v].integerValue());
        (clause.allowed[v] ? shown : hidden).push_back(title);
    }
    if (shown.size() <= hidden.size())
        return decider.label + " is " + joined(shown, " or ");
    return decider.label + " is not " + joined(hidden, " or ");
}

std::string ShownWhen::Page::conditionText(const Condition& condition) const
{
    if (condition.never)
        return "";
    std::vector<std::string> all;
    for (auto& clause : condition.all)
        all.push_back(clauseText(clause));
    std::vector<std::string> any;
    for (auto& term : condition.any) {
        std::vector<std::string> parts;
        for (auto& clause : term)
            parts.push_back(clauseText(clause));
        any.push_back(joined(parts, " and "));
    }
    std::string alternatives;
    for (std::size_t i = 0; i < any.size(); ++i)
        alternatives += (i ? (condition.any[i].size() > 1 || condition.any[i - 1].size() > 1 ? ", or " : " or ") : "") + any[i];
    if (all.empty())
        return alternatives;
    if (!any.empty())
        all.push_back("either " + alternatives);
    return joined(all, " and ");
}

std::string ShownWhen::Page::shownWhen(const std::string& id) const
{
    const Condition* found = condition(id);
    if (!found)
        return "";
    return found->never ? "never appears" : "appears when " + conditionText(*found);
}

ShownWhen ShownWhen::probeAll(const fs::path& resources)
{
    ShownWhen table;
    std::string pattern = (scratchParent() / "nimbra-probe-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("cannot make a temporary folder to open the pages in");
    try {
        Session session({.root = pattern, .resources = resources});
        session.open("NIMRootListController");
        for (auto& entry : NIMPageCatalog::all()) {
            try {
                PageProbe probe(session, entry.className);
                table._pages.emplace(entry.className, ShownWhen::probe(probe));
            } catch (const CommandError&) {
                // A page that cannot be opened has no conditions.
            }
        }
    } catch (...) {
        std::error_code ec;
        fs::remove_all(pattern, ec);
        throw;
    }
    std::error_code ec;
    fs::remove_all(pattern, ec);
    return table;
}

const ShownWhen& ShownWhen::derived(const fs::path& resources)
{
    static std::mutex building;
    static std::map<fs::path, std::unique_ptr<ShownWhen>> made;
    std::lock_guard lock(building);
    auto& slot = made[resources];
    if (!slot) {
        auto loaded = load(tableBesideProgram(), resources);
        if (loaded) {
            slot = std::make_unique<ShownWhen>(std::move(*loaded));
        } else {
            try {
                slot = std::make_unique<ShownWhen>(probeAll(resources));
            } catch (const std::exception&) {
                // No scratch root: no conditions, every row reads as always shown.
                slot = std::make_unique<ShownWhen>();
            }
        }
    }
    return *slot;
}

namespace {

/// The program readTableOf named; empty: the running program.
fs::path& programOfTable()
{
    static fs::path program;
    return program;
}

}  // namespace

void ShownWhen::readTableOf(const fs::path& program)
{
    programOfTable() = program;
}

fs::path ShownWhen::tableBesideProgram()
{
    if (!programOfTable().empty())
        return programOfTable().string() + ".shown-when.json";
    std::error_code ec;
    fs::path program = fs::read_symlink("/proc/self/exe", ec);
    if (ec)
        return {};
    return program.string() + ".shown-when.json";
}

namespace {

constexpr std::string_view kTableFormat = "com.veltram.nimbraprefs.shown-when";
constexpr int kTableVersion = 1;
/// A table is far smaller; a larger file is no table.
constexpr std::size_t kMostTableBytes = 16 << 20;

std::uint64_t fnv(std::uint64_t hash, std::string_view bytes)
{
    for (unsigned char c : bytes) {
        hash ^= c;
        hash *= 1099511628211ULL;
    }
    return hash;
}

nlohmann::ordered_json clauseJson(const ShownWhen::Clause& clause)
{
    nlohmann::ordered_json allowed = nlohmann::ordered_json::array();
    for (std::size_t v = 0; v < clause.allowed.size(); ++v)
        if (clause.allowed[v])
            allowed.push_back(v);
    return {clause.decider, allowed};
}

/// A clause read back; false when it does not fit the page's deciders.
bool readClause(const nlohmann::json& json, const std::vector<PageProbe::Decider>& deciders, ShownWhen::Clause& clause)
{
    if (!json.is_array() || json.size() != 2 || !json[0].is_number_unsigned() || !json[1].is_array())
        return false;
    clause.decider = json[0].get<std::size_t>();
    if (clause.decider >= deciders.size())
        return false;
    clause.allowed.assign(deciders[clause.decider].values.size(), false);
    for (auto& value : json[1]) {
        if (!value.is_number_unsigned() || value.get<std::size_t>() >= clause.allowed.size())
            return false;
        clause.allowed[value.get<std::size_t>()] = true;
    }
    return true;
}

PlistValue plistOf(const nlohmann::json& json)
{
    if (json.is_boolean())
        return PlistValue(json.get<bool>());
    if (json.is_number_integer())
        return PlistValue(static_cast<long long>(json.get<std::int64_t>()));
    if (json.is_number())
        return PlistValue(json.get<double>());
    if (json.is_string())
        return PlistValue(json.get<std::string>());
    return PlistValue();
}

}  // namespace

std::string ShownWhen::resourcesStamp(const fs::path& resources)
{
    std::uint64_t hash = 14695981039346656037ULL;
    for (auto& entry : NIMPageCatalog::all()) {
        const std::string& definition = entry.description().definition;
        if (definition.empty())
            continue;
        // A page without a definition file is opened by nothing; one that gains a file changes the stamp.
        auto bytes = AtomicFile::read(resources / (definition + ".plist"), kMostTableBytes);
        if (!bytes)
            continue;
        hash = fnv(hash, definition);
        hash = fnv(hash, std::string_view("\0", 1));
        hash = fnv(hash, *bytes);
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

std::string ShownWhen::programStamp()
{
    struct stat info {};
    const fs::path program = programOfTable().empty() ? fs::path("/proc/self/exe") : programOfTable();
    if (::stat(program.c_str(), &info) != 0)
        return "";
    return std::to_string(info.st_size) + ":" + std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec);
}

std::string ShownWhen::save(const fs::path& resources) const
{
    nlohmann::ordered_json pages = nlohmann::ordered_json::object();
    for (auto& [className, page] : _pages) {
        nlohmann::ordered_json deciders = nlohmann::ordered_json::array();
        for (auto& decider : page.deciders) {
            nlohmann::ordered_json values = nlohmann::ordered_json::array();
            for (auto& value : decider.values)
                values.push_back(toJson(value));
            deciders.push_back({{"id", decider.id}, {"key", decider.key}, {"domain", decider.domain}, {"label", decider.label},
                                {"switch", decider.isSwitch}, {"values", values}, {"titles", decider.titles},
                                {"default", decider.shownByDefault}});
        }
        nlohmann::ordered_json rows = nlohmann::ordered_json::object();
        for (auto& [id, condition] : page.conditions) {
            nlohmann::ordered_json all = nlohmann::ordered_json::array(), any = nlohmann::ordered_json::array();
            for (auto& clause : condition.all)
                all.push_back(clauseJson(clause));
            for (auto& term : condition.any) {
                nlohmann::ordered_json clauses = nlohmann::ordered_json::array();
                for (auto& clause : term)
                    clauses.push_back(clauseJson(clause));
                any.push_back(clauses);
            }
            rows[id] = {{"all", all}, {"any", any}, {"never", condition.never}};
        }
        pages[className] = {{"deciders", deciders}, {"rows", rows}};
    }
    nlohmann::ordered_json table{{"format", kTableFormat},
                         {"version", kTableVersion},
                         {"program", programStamp()},
                         {"resources", resourcesStamp(resources)},
                         {"pages", pages}};
    return table.dump() + "\n";
}

std::optional<ShownWhen> ShownWhen::load(const fs::path& file, const fs::path& resources)
{
    if (file.empty())
        return std::nullopt;
    auto bytes = AtomicFile::read(file, kMostTableBytes);
    if (!bytes || jsonNestingDepth(*bytes) > 12)
        return std::nullopt;
    nlohmann::json table = nlohmann::json::parse(*bytes, nullptr, false);
    if (!table.is_object() || table.value("format", "") != kTableFormat || table.value("version", 0) != kTableVersion ||
        table.value("program", "") != programStamp() || table.value("resources", "") != resourcesStamp(resources) ||
        !table["pages"].is_object())
        return std::nullopt;
    ShownWhen loaded;
    try {
        for (auto& [className, json] : table["pages"].items()) {
            Page page;
            for (auto& decider : json.at("deciders")) {
                PageProbe::Decider read{.id = decider.at("id"), .key = decider.at("key"), .domain = decider.at("domain"),
                                        .label = decider.at("label")};
                read.isSwitch = decider.at("switch");
                for (auto& value : decider.at("values"))
                    read.values.push_back(plistOf(value));
                read.titles = decider.at("titles").get<std::vector<std::string>>();
                read.shownByDefault = decider.at("default");
                if (read.values.empty() || read.titles.size() != read.values.size() || read.shownByDefault >= read.values.size())
                    return std::nullopt;
                page.deciders.push_back(std::move(read));
            }
            for (auto& [id, row] : json.at("rows").items()) {
                Condition condition;
                condition.never = row.at("never");
                for (auto& clause : row.at("all")) {
                    Clause read;
                    if (!readClause(clause, page.deciders, read))
                        return std::nullopt;
                    condition.all.push_back(std::move(read));
                }
                for (auto& term : row.at("any")) {
                    std::vector<Clause> clauses;
                    for (auto& clause : term) {
                        Clause read;
                        if (!readClause(clause, page.deciders, read))
                            return std::nullopt;
                        clauses.push_back(std::move(read));
                    }
                    condition.any.push_back(std::move(clauses));
                }
                page.conditions.emplace(id, std::move(condition));
            }
            loaded._pages.emplace(className, std::move(page));
        }
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
    return loaded;
}

const ShownWhen::Page* ShownWhen::page(const std::string& className) const
{
    auto found = _pages.find(className);
    return found == _pages.end() ? nullptr : &found->second;
}
