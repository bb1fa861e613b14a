#include "host/PageProbe.h"

#include "frame/NIMPageCatalog.h"
#include "host/Session.h"
#include "platform/HBPreferences.h"
#include "platform/PSPageDefinition.h"

#include <algorithm>
#include <map>

namespace {

PlistValue field(const PlistDictionary& item, const char* name)
{
    auto found = item.find(name);
    return found == item.end() ? PlistValue() : found->second;
}

std::string text(const PlistDictionary& item, const char* name)
{
    PlistValue value = field(item, name);
    return value.isString() ? value.stringValue() : std::string();
}

bool sameValue(const PlistValue& a, const PlistValue& b)
{
    if (a.isNumber() && b.isNumber())
        return a.integerValue() == b.integerValue();
    if (a.isString() && b.isString())
        return a.stringValue() == b.stringValue();
    return false;
}

}  // namespace

PageProbe::PageProbe(Session& session, const std::string& className)
    : _session(session)
{
    const NIMPageEntry* entry = NIMPageCatalog::find(className);
    if (!entry)
        throw CommandError("unknown page controller \"" + className + "\"", CommandError::Kind::NotFound);
    auto loaded = PSPageDefinition::named(entry->description().definition);
    if (loaded.definition) {
        std::map<std::string, bool> seenKeys;
        for (auto& item : loaded.definition->items()) {
            std::string key = text(*item, "key"), domain = text(*item, "defaults"), cell = text(*item, "cell");
            if (key.empty() || domain.empty() || !HBPreferences::isValidIdentifier(domain) || seenKeys[domain + '\n' + key])
                continue;
            Decider decider{.id = text(*item, "id"), .key = key, .domain = domain, .label = text(*item, "label")};
            PlistValue shownDefault = field(*item, "default");
            if (cell == "PSSwitchCell") {
                decider.isSwitch = true;
                decider.values = {PlistValue(false), PlistValue(true)};
                decider.titles = {"", ""};
                decider.shownByDefault = shownDefault.isNil() ? 0 : shownDefault.boolValue() ? 1 : 0;
            } else if ((cell == "PSSegmentCell" || cell == "PSLinkListCell") && field(*item, "validValues").kind() == PlistValue::Kind::Array) {
                PlistValue values = field(*item, "validValues"), titles = field(*item, "validTitles");
                // A row offers at most as many values as a state can count.
                if (values.arrayValue().empty() || values.arrayValue().size() > 64)
                    continue;
                if (shownDefault.isNil())
                    shownDefault = PlistValue(0LL);
                for (std::size_t i = 0; i < values.arrayValue().size(); ++i) {
                    decider.values.push_back(values.arrayValue()[i]);
                    bool titled = titles.kind() == PlistValue::Kind::Array && i < titles.arrayValue().size() && titles.arrayValue()[i].isString();
                    decider.titles.push_back(titled ? titles.arrayValue()[i].stringValue() : std::string());
                    if (sameValue(values.arrayValue()[i], shownDefault))
                        decider.shownByDefault = static_cast<std::uint8_t>(i);
                }
            } else {
                continue;
            }
            seenKeys[domain + '\n' + key] = true;
            _deciders.push_back(std::move(decider));
        }
    }
    _session.open(className);
    // The rows of the definition, every one present: the rebuild before the page removes any.
    auto page = _session.topPage();
    page->PSListController::reloadSpecifiers();
    for (auto& row : page->specifiers()) {
        const std::string& id = row->identifier();
        if (!id.empty() && _idIndex.emplace(id, _ids.size()).second)
            _ids.push_back(id);
    }
    std::vector<std::string> captured = entry->description().capturedIds();
    for (auto& id : _ids)
        _detachable.push_back(std::find(captured.begin(), captured.end(), id) != captured.end());
    _session.process().events().drain();
}

PageProbe::~PageProbe()
{
    try {
        _session.back();
    } catch (const CommandError&) {
        // The probe's page was the only one: nothing to leave.
    }
    _session.process().events().drain();
}

PageProbe::State PageProbe::initial() const
{
    State state;
    for (auto& decider : _deciders)
        state.push_back(decider.shownByDefault);
    return state;
}

void PageProbe::store(const State& state)
{
    std::map<std::string, PlistDictionary> domains;
    std::map<std::string, bool> changed;
    for (std::size_t i = 0; i < _deciders.size(); ++i) {
        const Decider& decider = _deciders[i];
        domains[decider.domain][decider.key] = decider.values[state[i]];
        if (_stored.empty() || _stored[i] != state[i])
            changed[decider.domain] = true;
    }
    for (auto& [domain, values] : domains)
        if (changed[domain] && !HBPreferences::preferencesForIdentifier(domain)->replaceAllObjects(values))
            throw CommandError("could not write " + domain);
    _stored = state;
}

const std::vector<bool>& PageProbe::shown(const State& state)
{
    auto known = _shown.find(keyOf(state));
    if (known != _shown.end())
        return known->second;
    store(state);
    auto page = _session.topPage();
    page->reloadSpecifiers();
    ++_rebuilds;
    std::vector<bool> flags(_ids.size(), false);
    for (auto& row : page->specifiers()) {
        auto index = _idIndex.find(row->identifier());
        if (index != _idIndex.end())
            flags[index->second] = true;
    }
    _session.process().events().drain();
    _asked.push_back(state);
    return _shown.emplace(keyOf(state), std::move(flags)).first->second;
}

bool PageProbe::shows(const State& state, std::size_t row)
{
    return shown(state)[row];
}
