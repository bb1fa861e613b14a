#include "host/ChangeWords.h"

#include "frame/NIMPageCatalog.h"
#include "host/JsonValue.h"
#include "platform/PSPageDefinition.h"
#include "storage/NIMAppPicker.h"

#include <cmath>
#include <cstdio>
#include <set>

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kArrow = " \u2192 ";
constexpr const char* kSeparator = " \u203a ";

const std::string& text(const PlistDictionary& item, const char* name)
{
    static const std::string none;
    auto found = item.find(name);
    return found != item.end() && found->second.isString() ? found->second.stringValue() : none;
}

const PlistValue* property(const PlistDictionary& item, const char* name)
{
    auto found = item.find(name);
    return found == item.end() ? nullptr : &found->second;
}

std::string joined(const std::vector<std::string>& parts, std::size_t from)
{
    std::string line;
    for (std::size_t i = from; i < parts.size(); ++i)
        line += (i > from ? kSeparator : "") + parts[i];
    return line;
}

/// A number as a person writes it: 13, 0.5, 2.25 (at most two decimals).
std::string numberWords(const Json& value)
{
    if (value.is_number_integer())
        return value.dump();
    double number = value.get<double>();
    if (!std::isfinite(number))
        return value.dump();
    if (number == std::floor(number) && std::fabs(number) < 1e15)
        return std::to_string(static_cast<long long>(number));
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.2f", number);
    std::string written = buffer;
    while (written.back() == '0')
        written.pop_back();
    if (written.back() == '.')
        written.pop_back();
    return written;
}

bool sameValue(const Json& a, const Json& b)
{
    if (a.is_number() && b.is_number())
        return a.get<double>() == b.get<double>();
    return a == b;
}

std::string inQuotes(const std::string& value)
{
    return value.empty() ? "Empty" : "\u201c" + value + "\u201d";
}

std::string count(std::size_t n, const char* one, const char* many)
{
    return n == 0 ? std::string("No ") + many : std::to_string(n) + " " + (n == 1 ? one : many);
}

/// Any stored value, when no row says how it is shown.
std::string plainWords(const Json& value)
{
    if (value.is_null())
        return "Not Set";
    if (value.is_boolean())
        return value.get<bool>() ? "On" : "Off";
    if (value.is_number())
        return numberWords(value);
    if (value.is_string())
        return inQuotes(value.get<std::string>());
    if (value.is_array())
        return count(value.size(), "Item", "Items");
    if (value.is_object())
        return count(value.size(), "Value", "Values");
    return value.dump();
}

std::string pictureWords(const Json& size)
{
    if (!size.is_number())
        return "No Picture";
    double kib = size.get<double>() / 1024.0;
    return "Picture (" + (kib < 1 ? std::string("under 1") : std::to_string(static_cast<long long>(std::lround(kib)))) + " KB)";
}

}  // namespace

ChangeWords::ChangeWords(const SearchIndex& index, const std::filesystem::path& resources)
{
    std::set<std::string> seen;
    for (const SearchIndex::Entry& entry : index.entries()) {
        if (!seen.insert(entry.page).second)
            continue;
        const NIMPageEntry* page = NIMPageCatalog::find(entry.page);
        if (!page)
            continue;
        const PageDescription& description = page->description();
        auto loaded = PSPageDefinition::read(resources, description.definition);
        if (!loaded.definition)
            continue;
        // The root page's own rows are the bundle's; every other page is named from below the root.
        std::string where = entry.path.size() > 1 ? joined(entry.path, 1) : entry.path.empty() ? "Nimbra" : entry.path.front();
        std::string group = entry.path.size() > 1 ? entry.path[1] : "Nimbra";
        std::string groupLabel;
        for (auto& shared : loaded.definition->items()) {
            const PlistDictionary& item = *shared;
            const std::string& cell = text(item, "cell");
            if (cell == "PSGroupCell") {
                groupLabel = text(item, "label");
                continue;
            }
            std::string label = !text(item, "label").empty() ? text(item, "label") : groupLabel;
            if (label.empty())
                continue;
            if (text(item, "cellClass") == "NimbraImagePicker" && !text(item, "fileName").empty()) {
                _pictures.emplace(text(item, "fileName"), std::pair{where, label});
                continue;
            }
            Row row{where, label};
            std::string domain = text(item, "defaults"), key = text(item, "key");
            if (const std::string& action = text(item, "action"); !action.empty()) {
                for (auto& [selector, run] : description.actions) {
                    const NIMAppPicker::Push* push = selector == action ? run.target<NIMAppPicker::Push>() : nullptr;
                    if (push) {
                        domain = push->storeIdentifier;
                        key = push->key;
                        row.kind = Row::Kind::Apps;
                    }
                }
            }
            if (domain.empty() || key.empty())
                continue;
            if (row.kind != Row::Kind::Apps) {
                const PlistValue* values = property(item, "validValues");
                const PlistValue* titles = property(item, "validTitles");
                if (values && titles && values->kind() == PlistValue::Kind::Array && titles->kind() == PlistValue::Kind::Array) {
                    row.kind = Row::Kind::Choice;
                    for (std::size_t i = 0; i < values->arrayValue().size() && i < titles->arrayValue().size(); ++i)
                        row.titles.emplace_back(toJson(values->arrayValue()[i]), titles->arrayValue()[i].stringValue());
                } else if (cell == "PSSwitchCell") {
                    row.kind = Row::Kind::Switch;
                } else if (cell == "PSSliderCell") {
                    row.kind = Row::Kind::Number;
                } else if (text(item, "cellClass") == "NimbraColorPickerTableCell") {
                    row.kind = Row::Kind::Colour;
                }
                if (const PlistValue* fallback = property(item, "default"))
                    row.fallback = toJson(*fallback);
            }
            _groups.emplace(domain, group);
            _rows.emplace(std::pair{domain, key}, std::move(row));
        }
    }
}

const ChangeWords::Row* ChangeWords::rowFor(const std::string& domain, const std::string& key) const
{
    auto found = _rows.find({domain, key});
    return found == _rows.end() ? nullptr : &found->second;
}

std::string ChangeWords::groupOf(const std::string& domain) const
{
    // The domain itself, else the longest domain it extends ("….homescreen.colors" is Home Screen's).
    for (std::string name = domain; !name.empty();) {
        if (auto found = _groups.find(name); found != _groups.end())
            return found->second;
        auto dot = name.rfind('.');
        name = dot == std::string::npos ? std::string() : name.substr(0, dot);
    }
    return "Nimbra";
}

std::string ChangeWords::valueWords(const Row& row, const Json& value) const
{
    if (value.is_null()) {
        if (!row.fallback.is_null())
            return valueWords(row, row.fallback);
        switch (row.kind) {
        case Row::Kind::Switch: return "Off";
        case Row::Kind::Apps: return "No Apps";
        default: return "Not Set";
        }
    }
    switch (row.kind) {
    case Row::Kind::Switch:
        if (value.is_boolean())
            return value.get<bool>() ? "On" : "Off";
        if (value.is_number())
            return value.get<double>() != 0 ? "On" : "Off";
        break;
    case Row::Kind::Choice:
        for (auto& [choice, title] : row.titles)
            if (sameValue(choice, value))
                return title;
        break;
    case Row::Kind::Number:
        if (value.is_number())
            return numberWords(value);
        break;
    case Row::Kind::Colour:
        if (value.is_string())
            return value.get<std::string>();
        break;
    case Row::Kind::Text:
        if (value.is_string())
            return inQuotes(value.get<std::string>());
        break;
    case Row::Kind::Apps:
        if (value.is_array())
            return count(value.size(), "App", "Apps");
        break;
    }
    return plainWords(value);
}

Json ChangeWords::describe(const Json& change) const
{
    Json described = change;
    const Json none;
    const Json& old = change.contains("old") ? change["old"] : none;
    const Json& now = change.contains("new") ? change["new"] : none;
    if (change.contains("picture")) {
        // The picture's device path ("/var/jb/var/mobile/Library/Nimbra/NAME.png") or its name.
        std::string name = change["picture"].is_string() ? std::filesystem::path(change["picture"].get<std::string>()).stem().string() : std::string();
        auto found = _pictures.find(name);
        std::string from = pictureWords(old), to = pictureWords(now);
        std::string what = old.is_null() ? "picture added" : "picture replaced";
        if (found != _pictures.end()) {
            described["where"] = found->second.first;
            described["setting"] = found->second.second;
            described["text"] = found->second.first + kSeparator + found->second.second + ": " + what;
        } else {
            described["where"] = "Pictures";
            described["setting"] = inQuotes(name);
            described["text"] = "A picture no page shows (" + inQuotes(name) + "): " + what;
        }
        described["from"] = from;
        described["to"] = to;
        return described;
    }
    std::string domain = change.value("domain", std::string()), key = change.value("key", std::string());
    if (const Row* row = rowFor(domain, key)) {
        std::string from = valueWords(*row, old), to = valueWords(*row, now);
        described["where"] = row->where;
        described["setting"] = row->label;
        described["from"] = from;
        described["to"] = to;
        std::string line = row->where + kSeparator + row->label + ": ";
        described["text"] = from == to ? line + "stays " + to : line + from + kArrow + to;
        return described;
    }
    std::string where = groupOf(domain) + " settings";
    described["where"] = where;
    described["setting"] = nullptr;
    described["from"] = plainWords(old);
    described["to"] = plainWords(now);
    described["text"] = where + ": " + key + (old.is_null() ? " added" : now.is_null() ? " removed" : " changed");
    return described;
}

Json ChangeWords::describeAll(const Json& changes) const
{
    Json described = Json::array();
    for (auto& change : changes)
        described.push_back(describe(change));
    return described;
}
