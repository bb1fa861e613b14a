#pragma once
// libsparkapplist's app picker: a page listing the installed apps (display name and bundle
// identifier) that stores the chosen ones as the library does on the device: the file
// "<identifier>.plist" in the Preferences directory, the key holding an array of bundle
// identifiers. With setMaxEnabled: 1 choosing an app replaces the previous choice.
//
// The installed apps are read from the property list
// "/var/mobile/Library/MobileInstallation/InstalledApplications.plist" (an array of dictionaries
// with "CFBundleIdentifier" and "CFBundleDisplayName"), the stand-in for LaunchServices' database.

#include "platform/PSListController.h"

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

struct InstalledApplication {
    std::string bundleIdentifier;
    std::string displayName;
};

class SparkAppListTableViewController : public PSListController {
public:
    /// The stand-in database of installed apps.
    static constexpr const char* kInstalledApplicationsPath = "/var/mobile/Library/MobileInstallation/InstalledApplications.plist";
    /// The installed apps, by display name.
    static std::vector<InstalledApplication> installedApplications();

    SparkAppListTableViewController() = default;
    /// initWithIdentifier:andKey:.
    SparkAppListTableViewController(std::string identifier, std::string key);

    void setMaxEnabled(int maxEnabled) { _maxEnabled = maxEnabled; }
    std::optional<int> maxEnabled() const { return _maxEnabled; }
    const std::string& identifier() const { return _identifier; }
    const std::string& key() const { return _key; }

    /// The chosen bundle identifiers, as stored.
    std::vector<std::string> enabledApplications() const;
    /// The user flips an app: chosen apps are unchosen; others are chosen (replacing the choice
    /// when at most one app may be chosen; ignored when a larger limit is reached). False when no
    /// installed app has that identifier. A choice that cannot be stored is reported by the store
    /// (an `error` event) and the app's row is reloaded to show what is stored.
    bool toggleApplication(const std::string& bundleIdentifier);

    /// One group row, then a switch row per installed app ("id", "key" and "bundleIdentifier" its
    /// identifier), by display name.
    SpecifierArray& specifiers() override;
    /// A row's value is whether its app is chosen.
    PlistValue readPreferenceValue(const std::shared_ptr<PSSpecifier>& specifier) override;
    void setPreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier) override;
    void describePush(Events::Push& event) const override;

private:
    /// Writes the choice; false when it did not reach the disk.
    bool store(const std::vector<std::string>& chosen);
    /// The chosen identifiers as a set, made once for each stored list (a table of thousands of
    /// apps asks once per row).
    const std::unordered_set<std::string>& chosenSet();

    PlistValue _chosenList;  // the stored list the set was made from (its identity marks it)
    std::unordered_set<std::string> _chosenSet;

    std::string _identifier;
    std::string _key;
    std::optional<int> _maxEnabled;
};
