#pragma once
// Preferences.framework's PSSpecifier: one settings row, a record of named properties with a
// target that receives its value and action calls.

#include "platform/ObjCRuntime.h"
#include "platform/PlistValue.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

enum class PSCellType {
    Group = 0,
    Link = 1,
    LinkList = 2,
    ListItem = 3,
    TitleValue = 4,
    Slider = 5,
    Switch = 6,
    StaticText = 7,
    EditText = 8,
    Segment = 9,
    GiantIcon = 10,
    Giant = 11,
    SecureEditText = 12,
    Button = 13,
    EditTextView = 14,
    Spinner = 15,
};

/// The cell type named by a definition's "cell" ("PSSwitchCell" -> Switch); unknown names are
/// static text.
PSCellType PSCellTypeFromString(std::string_view name);
/// Whether name is a cell type the Settings host knows.
bool PSCellTypeIsKnown(std::string_view name);
/// The definition name of a cell type ("PSSwitchCell").
std::string_view PSCellTypeName(PSCellType type);

/// An immutable dictionary that rows share (the parsed row of a page definition), with its "id"
/// and "key" strings found once, when it is wrapped, instead of once per row made from it.
struct PSSharedProperties {
    std::shared_ptr<const PlistDictionary> dictionary;
    /// The dictionary's own "id" and "key" strings ("" when absent or not strings).
    const std::string* identifier = nullptr;
    const std::string* key = nullptr;

    /// Wraps dictionary (nullptr: an empty one).
    static PSSharedProperties of(std::shared_ptr<const PlistDictionary> dictionary);
};

class PSSpecifier : public NSObject {
public:
    explicit PSSpecifier(std::string name = {}, PSCellType cellType = PSCellType::StaticText);
    /// A row whose properties start as the given dictionary, shared rather than copied: rows made
    /// from one parsed definition share its immutable dictionaries until one of them sets a
    /// property, which gives that row its own copy. A null dictionary is an empty one.
    PSSpecifier(std::string name, PSCellType cellType, const PSSharedProperties& properties);
    /// A distinct row with the same name, type, properties and target: neither row sees the
    /// other's later property changes.
    PSSpecifier(const PSSpecifier& other);
    PSSpecifier& operator=(const PSSpecifier&) = delete;

    /// preferenceSpecifierNamed:target:set:get:detail:cell:edit: with the standard setter
    /// (setPreferenceValue:specifier:) and getter (readPreferenceValue:), no detail and no edit pane.
    static std::shared_ptr<PSSpecifier> preferenceSpecifierNamed(std::string name, std::weak_ptr<NSObject> target,
                                                                 const ObjCClass* detail, PSCellType cell);
    /// A group header row.
    static std::shared_ptr<PSSpecifier> groupSpecifierWithName(std::string name);

    /// The value of one property, or nil.
    const PlistValue& propertyForKey(std::string_view key) const;
    /// Sets a property; nil removes it. A row sharing its dictionary copies it first, so other
    /// rows never see the change.
    void setProperty(PlistValue value, std::string_view key);
    /// Every property, by key (empty for a row that has none).
    const PlistDictionary& properties() const;

    std::shared_ptr<NSObject> target() const { return _target.lock(); }
    void setTarget(std::weak_ptr<NSObject> target) { _target = std::move(target); }

    const std::string& name() const { return _name; }
    void setName(std::string name) { _name = std::move(name); }
    PSCellType cellType() const { return _cellType; }

    /// The "id" property ("" when absent or not a string). Looked up once until a property is set.
    const std::string& identifier() const;
    /// The "key" property ("" when absent or not a string). Looked up once until a property is set.
    const std::string& key() const;
    /// The detail controller class of a link row ("detail"), or nullptr.
    const ObjCClass* detailControllerClass() const { return propertyForKey("detail").classValue(); }
    /// The custom cell class ("cellClass"), or nullptr.
    const ObjCClass* cellClass() const { return propertyForKey("cellClass").classValue(); }
    /// NO only when the "enabled" property is present and false.
    bool isEnabled() const;

    /// The class name a definition gave in "detail", even when no class of that name is loaded
    /// (so that a host can say which page is missing).
    const std::string& detailClassName() const { return _detailClassName; }
    void setDetailClassName(std::string name) { _detailClassName = std::move(name); }

private:
    std::string _name;
    PSCellType _cellType;
    /// Writable (own copy) only when _ownsProperties; otherwise shared with other rows.
    PlistDictionary& ownProperties();

    std::shared_ptr<const PlistDictionary> _properties;
    bool _ownsProperties = false;
    /// The shared dictionary a row copied from, kept so that values read from it before the copy
    /// stay valid for the row's life.
    std::shared_ptr<const PlistDictionary> _copiedFrom;
    /// "id" and "key" as last looked up (nullptr: not since the properties last changed).
    mutable const std::string* _identifier = nullptr;
    mutable const std::string* _key = nullptr;
    std::weak_ptr<NSObject> _target;
    std::string _detailClassName;
};

using SpecifierArray = std::vector<std::shared_ptr<PSSpecifier>>;
