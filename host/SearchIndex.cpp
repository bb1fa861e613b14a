#include "host/SearchIndex.h"

#include "frame/NIMPageCatalog.h"
#include "host/JsonValue.h"
#include "host/ShownWhen.h"
#include "platform/PSPageDefinition.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <map>
#include <set>
#include <tuple>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kRootPage = "NIMRootListController";

std::string lowered(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::vector<std::string> words(std::string_view query)
{
    std::vector<std::string> list;
    std::string lower = lowered(query);
    std::size_t at = 0;
    while (at < lower.size()) {
        std::size_t start = lower.find_first_not_of(" \t\r\n", at);
        if (start == std::string::npos)
            break;
        std::size_t end = lower.find_first_of(" \t\r\n", start);
        if (end == std::string::npos)
            end = lower.size();
        list.push_back(lower.substr(start, end - start));
        at = end;
    }
    return list;
}

/// The title and rows of a definition, or nothing when it cannot be read (by the rules every
/// page is opened with).
struct DefinitionRows {
    std::string title;
    PlistArray items;
};
std::optional<DefinitionRows> loadDefinition(const fs::path& resources, const std::string& name)
{
    auto loaded = PSPageDefinition::read(resources, name);
    if (!loaded.definition)
        return std::nullopt;
    DefinitionRows rows{loaded.definition->title().isString() ? loaded.definition->title().stringValue() : std::string(), {}};
    rows.items.reserve(loaded.definition->items().size());
    for (auto& item : loaded.definition->items())
        rows.items.push_back(PlistValue(*item));
    return rows;
}

/// "pages/SpringBoard/HomeScreenDock" -> "HomeScreenDock".
std::string routeSegment(const std::string& definition)
{
    auto slash = definition.rfind('/');
    return slash == std::string::npos ? definition : definition.substr(slash + 1);
}

/// Every word a row shows, joined by newlines.
std::string rowWords(const PlistValue& item)
{
    std::string text;
    auto add = [&](const PlistValue& value) {
        if (value.isString() && !value.stringValue().empty())
            text += value.stringValue() + '\n';
    };
    add(item["label"]);
    add(item["footerText"]);
    add(item["subtitle"]);
    if (item["validTitles"].kind() == PlistValue::Kind::Array)
        for (auto& title : item["validTitles"].arrayValue())
            add(title);
    return text;
}

struct PageToVisit {
    std::string className;
    std::vector<std::string> path;
    std::string route;
    std::vector<SearchIndex::Entry::Need> needs;
    std::vector<std::string> needsWords;
};

/// "Home Screen › Enabled": where the link's condition is met, in the words of its page.
std::string needWords(const std::vector<std::string>& path, const ShownWhen::Page& page, const ShownWhen::Condition& condition)
{
    std::string where;
    for (std::size_t i = 1; i < path.size(); ++i)
        where += path[i] + " \u203a ";
    auto clauses = condition.clauses();
    if (clauses.size() == 1 && page.deciders[clauses[0]->decider].isSwitch && clauses[0]->allowed[1])
        return where + page.deciders[clauses[0]->decider].label;
    return where + page.conditionText(condition);
}

}  // namespace

SearchIndex::SearchIndex(const fs::path& resources)
{
    const ShownWhen& shownWhen = ShownWhen::derived(resources);
    std::set<std::string> seen{std::string(kRootPage)};
    std::deque<PageToVisit> queue{{std::string(kRootPage), {}, ""}};
    while (!queue.empty()) {
        PageToVisit visit = std::move(queue.front());
        queue.pop_front();
        const NIMPageEntry* entry = NIMPageCatalog::find(visit.className);
        if (!entry)
            continue;
        const PageDescription& page = entry->description();
        auto definition = page.definition.empty() ? std::nullopt : loadDefinition(resources, page.definition);
        if (!definition)
            continue;
        if (visit.path.empty())
            visit.path.push_back(definition->title);
        const PlistArray& items = definition->items;
        const ShownWhen::Page* conditions = shownWhen.page(visit.className);
        for (std::size_t i = 0; i < items.size(); ++i) {
            const PlistValue& item = items[i];
            const std::string& detail = item["detail"].stringValue();
            const std::string& label = item["label"].stringValue();
            if (!detail.empty() && !label.empty() && NIMPageCatalog::find(detail) && seen.insert(detail).second) {
                const NIMPageEntry* linked = NIMPageCatalog::find(detail);
                std::string segment = routeSegment(linked->description().definition);
                std::vector<std::string> path = visit.path;
                path.push_back(label);
                PageToVisit next{detail, std::move(path), visit.route.empty() ? segment : visit.route + "/" + segment, visit.needs,
                                 visit.needsWords};
                const std::string& linkId = item["id"].stringValue();
                const ShownWhen::Condition* condition = conditions && !linkId.empty() ? conditions->condition(linkId) : nullptr;
                if (condition && !condition->never) {
                    next.needsWords.push_back(needWords(visit.path, *conditions, *condition));
                    for (const ShownWhen::Clause* clause : condition->clauses()) {
                        const PageProbe::Decider& decider = conditions->deciders[clause->decider];
                        Entry::Need need{visit.route, visit.className, decider.id, decider.key, decider.label, {}, {}};
                        for (std::size_t v = 0; v < decider.values.size(); ++v)
                            if (clause->allowed[v])
                                need.values.push_back(decider.values[v]);
                        need.condition = conditions->clauseText(*clause);
                        next.needs.push_back(std::move(need));
                    }
                }
                queue.push_back(std::move(next));
            }
            std::string text = rowWords(item);
            if (text.empty())
                continue;
            Entry result;
            result.page = visit.className;
            result.path = visit.path;
            result.route = visit.route;
            result.id = item["id"].stringValue();
            result.index = i;
            result.label = !label.empty() ? label : item["footerText"].stringValue();
            if (conditions && !result.id.empty())
                result.shownWhen = conditions->shownWhen(result.id);
            result.needs = visit.needs;
            for (std::size_t n = 0; n < visit.needsWords.size(); ++n)
                result.needsText += (n == 0 ? "needs " : n + 1 == visit.needsWords.size() ? " and " : ", ") + visit.needsWords[n];
            result.text = lowered(text);
            result.labelText = lowered(result.label);
            _entries.push_back(std::move(result));
        }
    }
}

std::vector<const SearchIndex::Entry*> SearchIndex::find(std::string_view query, std::size_t limit) const
{
    std::vector<std::string> wanted = words(query);
    if (wanted.empty())
        return {};
    std::string whole = lowered(query);
    whole.erase(0, whole.find_first_not_of(" \t\r\n"));
    std::vector<std::pair<int, const Entry*>> found;
    for (std::size_t n = 0; n < _entries.size(); ++n) {
        const Entry& entry = _entries[n];
        bool all = true, inLabel = true;
        for (auto& word : wanted) {
            if (entry.text.find(word) == std::string::npos) {
                all = false;
                break;
            }
            inLabel = inLabel && entry.labelText.find(word) != std::string::npos;
        }
        if (!all)
            continue;
        int tier = entry.labelText.starts_with(whole) ? 0 : inLabel ? 1 : 2;
        found.emplace_back(tier, &entry);
    }
    // Entries are already in page and row order: a stable sort by tier keeps it within a tier.
    std::stable_sort(found.begin(), found.end(), [](auto& a, auto& b) { return a.first < b.first; });
    std::vector<const Entry*> results;
    for (std::size_t i = 0; i < found.size() && i < limit; ++i)
        results.push_back(found[i].second);
    return results;
}

nlohmann::ordered_json SearchIndex::toJson(const Entry& entry)
{
    std::string path;
    for (std::size_t i = 0; i < entry.path.size(); ++i)
        path += (i ? " \u203a " : "") + entry.path[i];
    nlohmann::ordered_json json{{"page", entry.page}, {"path", path}, {"route", entry.route}};
    json["id"] = entry.id.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(entry.id);
    json["label"] = entry.label;
    json["shownWhen"] = entry.shownWhen.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(entry.shownWhen);
    json["needs"] = entry.needsText.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(entry.needsText);
    nlohmann::ordered_json needs = nlohmann::ordered_json::array();
    for (auto& need : entry.needs) {
        nlohmann::ordered_json values = nlohmann::ordered_json::array();
        for (auto& value : need.values)
            values.push_back(::toJson(value));
        needs.push_back({{"route", need.route},
                         {"page", need.page},
                         {"id", need.id.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(need.id)},
                         {"key", need.key},
                         {"label", need.label},
                         {"values", values},
                         {"condition", need.condition}});
    }
    json["needsRows"] = needs;
    return json;
}
