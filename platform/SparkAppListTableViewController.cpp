#include "platform/SparkAppListTableViewController.h"

#include "platform/EventLog.h"
#include "platform/Events.h"
#include "platform/HBPreferences.h"
#include "platform/NSFileManager.h"
#include "platform/PropertyListSerialization.h"

#include <algorithm>

NIM_REGISTER_CLASS(SparkAppListTableViewController, PSListController);

std::vector<InstalledApplication> SparkAppListTableViewController::installedApplications()
{
    std::vector<InstalledApplication> apps;
    auto bytes = NSFileManager::defaultManager().contentsAtPath(kInstalledApplicationsPath, 16 << 20);
    auto list = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
    if (!list)
        return apps;
    for (const PlistValue& entry : list->arrayValue()) {
        const std::string& identifier = entry["CFBundleIdentifier"].stringValue();
        if (identifier.empty())
            continue;
        const std::string& name = entry["CFBundleDisplayName"].stringValue();
        apps.push_back({identifier, name.empty() ? identifier : name});
    }
    std::stable_sort(apps.begin(), apps.end(), [](auto& a, auto& b) { return a.displayName < b.displayName; });
    return apps;
}

SparkAppListTableViewController::SparkAppListTableViewController(std::string identifier, std::string key)
    : _identifier(std::move(identifier))
    , _key(std::move(key))
{
}

std::vector<std::string> SparkAppListTableViewController::enabledApplications() const
{
    std::vector<std::string> chosen;
    for (const PlistValue& item : HBPreferences::preferencesForIdentifier(_identifier)->objectForKey(_key).arrayValue())
        if (item.isString())
            chosen.push_back(item.stringValue());
    return chosen;
}

bool SparkAppListTableViewController::store(const std::vector<std::string>& chosen)
{
    PlistArray array;
    for (auto& identifier : chosen)
        array.push_back(PlistValue(identifier));
    return HBPreferences::preferencesForIdentifier(_identifier)->setObject(PlistValue(std::move(array)), _key);
}

bool SparkAppListTableViewController::toggleApplication(const std::string& bundleIdentifier)
{
    auto apps = installedApplications();
    if (std::none_of(apps.begin(), apps.end(), [&](auto& app) { return app.bundleIdentifier == bundleIdentifier; }))
        return false;
    auto chosen = enabledApplications();
    auto found = std::find(chosen.begin(), chosen.end(), bundleIdentifier);
    if (found != chosen.end()) {
        chosen.erase(found);
    } else if (_maxEnabled == 1) {
        chosen = {bundleIdentifier};
    } else if (_maxEnabled && static_cast<int>(chosen.size()) >= *_maxEnabled) {
        return true;
    } else {
        chosen.push_back(bundleIdentifier);
    }
    std::string label = bundleIdentifier;
    for (auto& app : apps)
        if (app.bundleIdentifier == bundleIdentifier && !app.displayName.empty())
            label = app.displayName;
    HBPreferences::RowWrite row(label, navigationItem().title);
    if (!store(chosen) && specifiersLoaded()) {
        // The store said why (an error event); the app's switch shows what is stored again.
        for (auto& row : *_specifiers)
            if (row->propertyForKey("bundleIdentifier").stringValue() == bundleIdentifier)
                reloadSpecifier(row);
    }
    return true;
}

SpecifierArray& SparkAppListTableViewController::specifiers()
{
    if (specifiersLoaded())
        return *_specifiers;
    SpecifierArray rows{PSSpecifier::groupSpecifierWithName(_maxEnabled == 1 ? "Choose an App" : "Applications")};
    auto self = weak_from_this();
    for (auto& app : installedApplications()) {
        auto row = PSSpecifier::preferenceSpecifierNamed(app.displayName, self, nullptr, PSCellType::Switch);
        row->setProperty(PlistValue("PSSwitchCell"), "cell");
        row->setProperty(PlistValue(app.displayName), "label");
        row->setProperty(PlistValue(app.bundleIdentifier), "id");
        row->setProperty(PlistValue(app.bundleIdentifier), "bundleIdentifier");
        row->setProperty(PlistValue(app.bundleIdentifier), "key");
        rows.push_back(row);
    }
    setSpecifiers(std::move(rows));
    navigationItem().title = "Select Apps";
    return *_specifiers;
}

const std::unordered_set<std::string>& SparkAppListTableViewController::chosenSet()
{
    PlistValue stored = HBPreferences::preferencesForIdentifier(_identifier)->objectForKey(_key);
    // A stored list is shared, not copied, while it is unchanged: the same list, the same set.
    bool same = stored.kind() == PlistValue::Kind::Array && _chosenList.kind() == PlistValue::Kind::Array &&
                &stored.arrayValue() == &_chosenList.arrayValue();
    if (!same) {
        _chosenSet.clear();
        for (const PlistValue& item : stored.arrayValue())
            if (item.isString())
                _chosenSet.insert(item.stringValue());
        _chosenList = std::move(stored);
    }
    return _chosenSet;
}

PlistValue SparkAppListTableViewController::readPreferenceValue(const std::shared_ptr<PSSpecifier>& specifier)
{
    const std::string& identifier = specifier ? specifier->propertyForKey("bundleIdentifier").stringValue() : "";
    return PlistValue(!identifier.empty() && chosenSet().count(identifier) > 0);
}

void SparkAppListTableViewController::setPreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier)
{
    if (specifier && readPreferenceValue(specifier).boolValue() != value.boolValue())
        toggleApplication(specifier->propertyForKey("bundleIdentifier").stringValue());
}

void SparkAppListTableViewController::describePush(Events::Push& event) const
{
    event.identifier = _identifier;
    event.key = _key;
    event.maxEnabled = _maxEnabled;
}
