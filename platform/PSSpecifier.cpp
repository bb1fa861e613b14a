#include "platform/PSSpecifier.h"

#include <array>
#include <utility>

NIM_REGISTER_CLASS(PSSpecifier, NSObject);

namespace {

constexpr std::array<std::pair<std::string_view, PSCellType>, 16> cellNames{{
    {"PSGroupCell", PSCellType::Group},
    {"PSLinkCell", PSCellType::Link},
    {"PSLinkListCell", PSCellType::LinkList},
    {"PSListItemCell", PSCellType::ListItem},
    {"PSTitleValueCell", PSCellType::TitleValue},
    {"PSSliderCell", PSCellType::Slider},
    {"PSSwitchCell", PSCellType::Switch},
    {"PSStaticTextCell", PSCellType::StaticText},
    {"PSEditTextCell", PSCellType::EditText},
    {"PSSegmentCell", PSCellType::Segment},
    {"PSGiantIconCell", PSCellType::GiantIcon},
    {"PSGiantCell", PSCellType::Giant},
    {"PSSecureEditTextCell", PSCellType::SecureEditText},
    {"PSButtonCell", PSCellType::Button},
    {"PSEditTextViewCell", PSCellType::EditTextView},
    {"PSSpinnerCell", PSCellType::Spinner},
}};

}  // namespace

PSCellType PSCellTypeFromString(std::string_view name)
{
    for (auto& [text, type] : cellNames)
        if (text == name)
            return type;
    return PSCellType::StaticText;
}

bool PSCellTypeIsKnown(std::string_view name)
{
    for (auto& entry : cellNames)
        if (entry.first == name)
            return true;
    return false;
}

std::string_view PSCellTypeName(PSCellType type)
{
    for (auto& [text, t] : cellNames)
        if (t == type)
            return text;
    return "PSStaticTextCell";
}

PSSpecifier::PSSpecifier(std::string name, PSCellType cellType)
    : _name(std::move(name))
    , _cellType(cellType)
{
}

PSSharedProperties PSSharedProperties::of(std::shared_ptr<const PlistDictionary> dictionary)
{
    auto text = [&](std::string_view key) -> const std::string& {
        if (!dictionary)
            return PlistValue::nil().stringValue();
        auto found = dictionary->find(key);
        return found == dictionary->end() ? PlistValue::nil().stringValue() : found->second.stringValue();
    };
    const std::string& identifier = text("id");
    const std::string& key = text("key");
    return {std::move(dictionary), &identifier, &key};
}

PSSpecifier::PSSpecifier(std::string name, PSCellType cellType, const PSSharedProperties& properties)
    : _name(std::move(name))
    , _cellType(cellType)
    , _properties(properties.dictionary)
    , _identifier(properties.identifier)
    , _key(properties.key)
{
}

std::shared_ptr<PSSpecifier> PSSpecifier::preferenceSpecifierNamed(std::string name, std::weak_ptr<NSObject> target,
                                                                   const ObjCClass* detail, PSCellType cell)
{
    auto specifier = std::make_shared<PSSpecifier>(std::move(name), cell);
    specifier->setTarget(std::move(target));
    specifier->setProperty(PlistValue(detail), "detail");
    return specifier;
}

std::shared_ptr<PSSpecifier> PSSpecifier::groupSpecifierWithName(std::string name)
{
    auto specifier = std::make_shared<PSSpecifier>(name, PSCellType::Group);
    specifier->setProperty(PlistValue("PSGroupCell"), "cell");
    if (!name.empty())
        specifier->setProperty(PlistValue(name), "label");
    return specifier;
}

PSSpecifier::PSSpecifier(const PSSpecifier& other)
    : NSObject(other)
    , _name(other._name)
    , _cellType(other._cellType)
    , _properties(other._ownsProperties ? std::make_shared<PlistDictionary>(*other._properties) : other._properties)
    , _ownsProperties(other._ownsProperties)
    , _target(other._target)
    , _detailClassName(other._detailClassName)
{
}

const PlistDictionary& PSSpecifier::properties() const
{
    static const PlistDictionary none;
    return _properties ? *_properties : none;
}

const PlistValue& PSSpecifier::propertyForKey(std::string_view key) const
{
    if (!_properties)
        return PlistValue::nil();
    auto it = _properties->find(key);
    return it == _properties->end() ? PlistValue::nil() : it->second;
}

PlistDictionary& PSSpecifier::ownProperties()
{
    if (!_ownsProperties) {
        _copiedFrom = std::move(_properties);
        _properties = _copiedFrom ? std::make_shared<PlistDictionary>(*_copiedFrom) : std::make_shared<PlistDictionary>();
        _ownsProperties = true;
    }
    // Made here, non-const, and never handed to another row.
    return const_cast<PlistDictionary&>(*_properties);
}

const std::string& PSSpecifier::identifier() const
{
    if (!_identifier)
        _identifier = &propertyForKey("id").stringValue();
    return *_identifier;
}

const std::string& PSSpecifier::key() const
{
    if (!_key)
        _key = &propertyForKey("key").stringValue();
    return *_key;
}

void PSSpecifier::setProperty(PlistValue value, std::string_view key)
{
    _identifier = nullptr;
    _key = nullptr;
    if (value.isNil()) {
        if (_properties && _properties->find(key) != _properties->end())
            ownProperties().erase(std::string(key));
    } else
        ownProperties()[std::string(key)] = std::move(value);
}

bool PSSpecifier::isEnabled() const
{
    const PlistValue& enabled = propertyForKey("enabled");
    return enabled.isNil() || enabled.boolValue();
}
