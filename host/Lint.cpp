#include "host/Lint.h"

#include "frame/NIMCollapsibleListController.h"
#include "frame/NIMPageCatalog.h"
#include "platform/PSPageDefinition.h"
#include "platform/PSTableCell.h"
#include "platform/Process.h"

#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {

class PageCheck {
public:
    PageCheck(const NIMPageEntry& entry, const fs::path& resources, std::ostream& out, bool strict, LintResult& result)
        : _entry(entry)
        , _page(entry.description())
        , _out(out)
        , _strict(strict)
        , _result(result)
    {
        if (!_page.definition.empty())
            load(resources);
    }

    void run()
    {
        // Pages built at run time have no definition to hold to their rules.
        if (_page.definition.empty() || (_items.empty() && _loadFailed))
            return;
        checkRows();
        checkWording();
        checkRules();
        for (auto& id : _page.capturedIds())
            requireId(id, "the page captures");
        for (auto& id : _page.referencedIds)
            requireId(id, "the page refers to");
    }

private:
    void problem(const std::string& message)
    {
        ++_result.problems;
        _out << _entry.className << " (" << _page.definition << "): " << message << '\n';
    }

    void load(const fs::path& resources)
    {
        auto loaded = PSPageDefinition::read(resources, _page.definition);
        if (!loaded.definition) {
            _loadFailed = true;
            problem(loaded.error);
            return;
        }
        for (auto& item : loaded.definition->items())
            _items.push_back(PlistValue(*item));
        for (std::size_t i = 0; i < _items.size(); ++i) {
            const std::string& id = _items[i]["id"].stringValue();
            if (id.empty())
                continue;
            if (_positions.contains(id))
                problem("id \"" + id + "\" appears more than once");
            else
                _positions[id] = i;
        }
    }

    std::string describe(std::size_t index) const
    {
        const PlistValue& item = _items[index];
        if (!item["id"].stringValue().empty())
            return "row \"" + item["id"].stringValue() + "\"";
        if (!item["label"].stringValue().empty())
            return "row \"" + item["label"].stringValue() + "\"";
        return "row " + std::to_string(index);
    }

    bool requireId(const std::string& id, const std::string& who)
    {
        if (_positions.contains(id))
            return true;
        problem("id \"" + id + "\" that " + who + " is missing");
        return false;
    }

    std::set<std::string> allowedDomains() const
    {
        std::set<std::string> domains(_page.otherDomains.begin(), _page.otherDomains.end());
        if (!_page.domain.empty()) {
            domains.insert(_page.domain);
            domains.insert(_page.domain + ".colors");
        }
        return domains;
    }

    void checkRows()
    {
        auto domains = allowedDomains();
        auto controller = instantiate();
        for (std::size_t i = 0; i < _items.size(); ++i) {
            const PlistValue& item = _items[i];
            const std::string& cell = item["cell"].stringValue();
            if (!PSCellTypeIsKnown(cell))
                problem(describe(i) + " has an unknown cell type \"" + cell + "\"");
            const std::string& key = item["key"].stringValue();
            const std::string& domain = item["defaults"].stringValue();
            if (!key.empty() && !domains.contains(domain))
                problem(describe(i) + " stores \"" + key + "\" in \"" + domain + "\", which is not one of the page's domains");
            const std::string& cellClass = item["cellClass"].stringValue();
            const ObjCClass* cls = cellClass.empty() ? nullptr : ObjCRuntime::registeredClassNamed(cellClass);
            if (!cellClass.empty() && !cls)
                problem(describe(i) + " names the unknown cell class \"" + cellClass + "\"");
            if (cellClass == "NimbraColorPickerTableCell") {
                if (cell != "PSLinkCell")
                    problem(describe(i) + " is a colour row but not a PSLinkCell");
                if (!_page.fixesColorRows)
                    problem(describe(i) + " is a colour row on a page that does not rewrite colour rows");
                if (!domain.ends_with(".colors"))
                    problem(describe(i) + " is a colour row storing outside a colour domain");
            }
            checkLink(i);
            checkAction(i, cls, controller);
        }
    }

    /// What a user reads: every choice row shows one of its values when its key is absent and has
    /// a title for each value, every slider starts inside its range, every control has a title, no
    /// two rows of a section read alike, and no text shows a preference key, a row id or a type
    /// name. Problems under `strict`, advice otherwise.
    void checkWording()
    {
        auto developerWords = identifiers();
        std::set<std::string> sectionLabels;
        const PlistValue* header = nullptr;
        for (std::size_t i = 0; i < _items.size(); ++i) {
            const PlistValue& item = _items[i];
            const std::string& cell = item["cell"].stringValue();
            checkText(i, developerWords);
            if (cell == "PSGroupCell") {
                sectionLabels.clear();
                header = &item;
                continue;
            }
            if (cell == "PSSegmentCell" || cell == "PSLinkListCell")
                checkChoices(i);
            if (cell == "PSSliderCell")
                checkSliderRange(i);
            checkDefault(i);
            const std::string& label = item["label"].stringValue();
            // A slider or a segment that opens its section is titled by the section's header.
            bool titledByHeader = (cell == "PSSliderCell" || cell == "PSSegmentCell") && i > 0 && header == &_items[i - 1] &&
                                  !(*header)["label"].stringValue().empty();
            if (label.empty() && isControl(cell) && !titledByHeader)
                wording(describe(i) + " is a control without a label");
            if (!label.empty() && !sectionLabels.insert(label).second)
                wording(describe(i) + " reads \"" + label + "\" like another row of its section");
            if (cell != "PSStaticTextCell" && !isTitleCase(label))
                wording(describe(i) + " is labelled \"" + label + "\", not in title case");
        }
    }

    /// Row labels are written as the Settings app writes them: every word of four letters or more
    /// starts with a capital ("Hide With Keyboard", "Show in Apps"); a word such as "iPhone" keeps
    /// its own spelling. Free text rows (credits, notes) are exempt.
    static bool isTitleCase(const std::string& label)
    {
        std::size_t start = 0;
        while (start < label.size()) {
            while (start < label.size() && !std::isalpha(static_cast<unsigned char>(label[start])))
                ++start;
            std::size_t end = start;
            while (end < label.size() && std::isalpha(static_cast<unsigned char>(label[end])))
                ++end;
            bool ownSpelling = end - start > 1 && label[start] == 'i' && std::isupper(static_cast<unsigned char>(label[start + 1]));
            if (end - start >= 4 && std::islower(static_cast<unsigned char>(label[start])) && !ownSpelling)
                return false;
            start = end;
        }
        return true;
    }

    static bool isControl(const std::string& cell)
    {
        return cell == "PSSwitchCell" || cell == "PSSegmentCell" || cell == "PSSliderCell" || cell == "PSEditTextCell" ||
               cell == "PSLinkListCell";
    }

    /// A choice row without a default ticks nothing until the user chooses, which is allowed; one
    /// with a default must offer it. Every value needs a title that is not empty.
    void checkChoices(std::size_t i)
    {
        const PlistValue& item = _items[i];
        const PlistValue& fallback = item["default"];
        const PlistArray& list = item["validValues"].arrayValue();
        if (!fallback.isNil() && std::find(list.begin(), list.end(), fallback) == list.end())
            wording(describe(i) + " defaults to a value it does not offer");
        const PlistArray& titles = item["validTitles"].arrayValue();
        if (titles.size() != list.size())
            wording(describe(i) + " has " + std::to_string(list.size()) + " values but " + std::to_string(titles.size()) +
                    " titles");
        else if (std::any_of(titles.begin(), titles.end(), [](const PlistValue& title) { return title.stringValue().empty(); }))
            wording(describe(i) + " has a value without a title");
    }

    /// A slider needs a range that is not empty and a default inside it; a row without a default
    /// shows the range's minimum.
    void checkSliderRange(std::size_t i)
    {
        const PlistValue& item = _items[i];
        const PlistValue& min = item["min"];
        const PlistValue& max = item["max"];
        if (!min.isNumber() || !max.isNumber() || min.doubleValue() >= max.doubleValue()) {
            wording(describe(i) + " is a slider without a range");
            return;
        }
        const PlistValue& fallback = item["default"];
        if (fallback.isNumber() && (fallback.doubleValue() < min.doubleValue() || fallback.doubleValue() > max.doubleValue()))
            wording(describe(i) + " defaults to a value outside its range");
    }

    /// A row shows, when nothing is stored, what the code reading its key sees: the default the
    /// page's reload names for the key (boolForKey:default:, integerForKey:default:), else NO for a
    /// switch (an absent key reads NO, for the page and for the customisation code alike); a
    /// choice whose value a rule tests shows a value for which the reload of every such rule
    /// decides as it does for the absent key's 0 (or named default).
    void checkDefault(std::size_t i)
    {
        const PlistValue& item = _items[i];
        const std::string& key = item["key"].stringValue();
        const std::string& domain = item["defaults"].stringValue();
        const std::string& cell = item["cell"].stringValue();
        if (key.empty() || domain.ends_with(".colors"))
            return;
        PlistValue read;
        bool tested = false, numeric = false;
        for (auto& rule : _page.rules) {
            if (rule.key != key && rule.reloadKey != key)
                continue;
            tested = true;
            numeric = numeric || !rule.shownWhen.readsBoolean();
            if (!rule.reloadDefault.isNil() && read.isNil())
                read = rule.reloadDefault;
        }
        const PlistValue& shown = item["default"];
        if (cell == "PSSwitchCell") {
            bool expected = read.isNil() ? false : read.boolValue();
            if (shown.boolValue() != expected)
                wording(describe(i) + " shows " + (shown.boolValue() ? "on" : "off") + " while nothing is stored, but \"" + key +
                        "\" reads " + (expected ? "YES" : "NO") + " when absent");
            return;
        }
        if ((cell == "PSSegmentCell" || cell == "PSLinkListCell") && tested && numeric) {
            // A choice may show one of its own values for the absent key's 0, as long as every
            // rule's reload decides alike for both.
            PlistValue absent = read.isNil() ? PlistValue(0) : read;
            PlistValue showing = shown.isNil() ? PlistValue(0) : shown;
            bool alike = true;
            for (auto& rule : _page.rules) {
                if (rule.key != key && rule.reloadKey != key)
                    continue;
                // What the reload, which reads the stored value, does with each.
                const Condition& removes = rule.reloadRemovesWhen ? *rule.reloadRemovesWhen : rule.shownWhen;
                alike = alike && removes.holds(absent) == removes.holds(showing);
            }
            if (!alike)
                wording(describe(i) + " shows " + (shown.isNil() ? std::string("no value") : std::to_string(shown.integerValue())) +
                        " while nothing is stored, but \"" + key + "\" reads " + std::to_string(absent.integerValue()) + " when absent");
        }
    }

    /// The words only a developer knows: the page's own preference keys and row ids, where they
    /// are written as identifiers (a capital or a digit after the first letter, so that a key
    /// such as "style" may still be written as a word), and the names of value types.
    std::set<std::string> identifiers() const
    {
        std::set<std::string> words{"bool", "BOOL", "boolean", "int", "integer", "plist", "nil", "null", "NULL", "YES", "NO"};
        auto looksLikeAnIdentifier = [](const std::string& word) {
            return std::any_of(word.begin() + 1, word.end(), [](char c) { return std::isupper(static_cast<unsigned char>(c)) || std::isdigit(static_cast<unsigned char>(c)); });
        };
        for (auto& item : _items)
            for (const char* property : {"key", "id"}) {
                const std::string& word = item[property].stringValue();
                if (word.size() > 1 && std::islower(static_cast<unsigned char>(word[0])) && looksLikeAnIdentifier(word))
                    words.insert(word);
            }
        return words;
    }

    void checkText(std::size_t i, const std::set<std::string>& developerWords)
    {
        const PlistValue& item = _items[i];
        std::vector<std::pair<std::string, const std::string*>> texts;
        for (auto [property, where] : {std::pair{"label", "label"}, {"footerText", "footer"}, {"subtitle", "subtitle"}, {"placeholder", "placeholder"}})
            texts.emplace_back(where, &item[property].stringValue());
        for (auto& title : item["validTitles"].arrayValue())
            texts.emplace_back("value title", &title.stringValue());
        auto isWordChar = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
        for (auto& [where, text] : texts) {
            std::size_t start = 0;
            while (start < text->size()) {
                while (start < text->size() && !isWordChar((*text)[start]))
                    ++start;
                std::size_t end = start;
                while (end < text->size() && isWordChar((*text)[end]))
                    ++end;
                std::string word = text->substr(start, end - start);
                if (!word.empty() && developerWords.contains(word)) {
                    wording(describe(i) + " shows the developer word \"" + word + "\" in its " + where);
                    break;
                }
                start = end;
            }
        }
    }

    void wording(const std::string& message)
    {
        if (_strict)
            problem(message);
        else
            _out << "wording: " << _entry.className << " (" << _page.definition << "): " << message << '\n';
    }

    void checkLink(std::size_t i)
    {
        const std::string& detail = _items[i]["detail"].stringValue();
        if (detail.empty())
            return;
        const ObjCClass* cls = ObjCRuntime::registeredClassNamed(detail);
        if (cls && ObjCRuntime::isSubclass(*cls, "PSListController"))
            return;
        problem(describe(i) + " opens \"" + detail + "\", which is no page controller");
    }

    std::shared_ptr<NSObject> instantiate() const
    {
        const ObjCClass* cls = ObjCRuntime::registeredClassNamed(_entry.className);
        return cls && cls->make ? cls->make() : nullptr;
    }

    void checkAction(std::size_t i, const ObjCClass* cellClass, const std::shared_ptr<NSObject>& controller)
    {
        const std::string& action = _items[i]["action"].stringValue();
        if (action.empty())
            return;
        if (cellClass && cellClass->make) {
            auto cell = std::dynamic_pointer_cast<PSTableCell>(cellClass->make());
            if (cell) {
                auto specifier = std::make_shared<PSSpecifier>();
                for (auto& [key, value] : _items[i].dictionaryValue())
                    specifier->setProperty(value, key);
                specifier->setTarget(controller);
                cell->initWithSpecifier(specifier, 0);
                if (specifier->target() != controller) {
                    if (!cell->respondsToSelector(action))
                        problem(describe(i) + " calls " + action + ", which its cell " + cellClass->name + " does not answer");
                    return;
                }
            }
        }
        if (!controller || !controller->respondsToSelector(action))
            problem(describe(i) + " calls " + action + ", which the page does not answer");
    }

    void checkRules()
    {
        std::set<std::string> keys;
        for (auto& item : _items)
            if (!item["key"].stringValue().empty())
                keys.insert(item["key"].stringValue());
        for (auto& rule : _page.rules) {
            std::string who = "rule \"" + rule.name + "\"";
            if (!keys.contains(rule.key))
                problem(who + ": no row edits its key \"" + rule.key + "\"");
            if (!rule.row.empty() && requireId(rule.row, who + " reads")) {
                const std::string& edited = _items[_positions.at(rule.row)]["key"].stringValue();
                if (edited != rule.key)
                    problem(who + ": row \"" + rule.row + "\" should edit \"" + rule.key + "\" but edits \"" + edited + "\"");
            }
            for (auto& child : rule.children) {
                bool childThere = requireId(child.id, who + " shows");
                bool anchorThere = requireId(child.after, who + " inserts after");
                if (childThere && anchorThere && _positions.at(child.after) >= _positions.at(child.id))
                    problem(who + ": \"" + child.id + "\" comes before its anchor \"" + child.after + "\"");
            }
            if (!rule.guardNeverCaptured && !rule.guardId().empty())
                requireId(rule.guardId(), who + " guards on");
            for (auto& name : rule.nested)
                if (!_page.ruleNamed(name))
                    problem(who + " re-applies \"" + name + "\", which the page has no rule for");
            for (auto& id : rule.hides)
                requireId(id, who + " hides");
            for (auto& id : rule.reloadHides)
                requireId(id, who + " hides on reload");
            if (!rule.requiredRow.empty())
                requireId(rule.requiredRow, who + " reads");
        }
    }

    const NIMPageEntry& _entry;
    const PageDescription& _page;
    std::ostream& _out;
    bool _strict;
    LintResult& _result;
    std::vector<PlistValue> _items;
    std::map<std::string, std::size_t> _positions;
    bool _loadFailed = false;
};

}  // namespace

LintResult lintPages(const fs::path& resources, std::ostream& out, bool strict)
{
    LintResult result;
    // Controllers are made to ask them for their actions: in a process of their own, on a throw-away root.
    std::string pattern = (fs::temp_directory_path() / "nimbra-lint-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) {
        out << "lint: cannot make a temporary folder\n";
        result.problems = 1;
        return result;
    }
    {
        Process process({.root = pattern, .resources = resources});
        for (auto& entry : NIMPageCatalog::all()) {
            ++result.pages;
            PageCheck(entry, resources, out, strict, result).run();
        }
    }
    std::error_code ec;
    fs::remove_all(pattern, ec);
    return result;
}
