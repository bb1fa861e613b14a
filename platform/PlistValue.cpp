#include "platform/PlistValue.h"

#include "platform/ObjCRuntime.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

const std::string emptyString;
const PlistArray emptyArray;
const PlistDictionary emptyDictionary;

std::size_t skipSpace(std::string_view text, std::size_t i)
{
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i])))
        ++i;
    return i;
}

}  // namespace

PlistValue::PlistValue(PlistArray value)
    : _storage(std::make_shared<PlistArray>(std::move(value)))
{
}

PlistValue::PlistValue(PlistDictionary value)
    : _storage(std::make_shared<PlistDictionary>(std::move(value)))
{
}

PlistValue::PlistValue(const ObjCClass* cls)
{
    if (cls)
        _storage = cls;
}

PlistValue PlistValue::unsignedInteger(std::uint64_t value)
{
    PlistValue result;
    if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        result._storage = static_cast<std::int64_t>(value);
    else
        result._storage = LargeUnsigned{value};
    return result;
}

PlistValue::Kind PlistValue::kind() const
{
    if (std::holds_alternative<LargeUnsigned>(_storage))
        return Kind::Integer;
    return static_cast<Kind>(_storage.index());
}

std::uint64_t PlistValue::unsignedBits() const
{
    if (auto large = std::get_if<LargeUnsigned>(&_storage))
        return large->value;
    if (auto integer = std::get_if<std::int64_t>(&_storage))
        return static_cast<std::uint64_t>(*integer);
    return 0;
}

const PlistValue& PlistValue::nil()
{
    static const PlistValue value;
    return value;
}

bool NSStringBoolValue(std::string_view text)
{
    std::size_t i = skipSpace(text, 0);
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        ++i;
    while (i < text.size() && text[i] == '0')
        ++i;
    if (i >= text.size())
        return false;
    char c = text[i];
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

std::int64_t NSStringIntegerValue(std::string_view text)
{
    std::size_t i = skipSpace(text, 0);
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        negative = text[i++] == '-';
    // Accumulate as a negative number so that the most negative value fits.
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;
    bool overflow = false;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
        int digit = text[i] - '0';
        if (value < (lowest + digit) / 10) {
            overflow = true;
            continue;
        }
        value = value * 10 - digit;
    }
    if (overflow)
        return negative ? lowest : std::numeric_limits<std::int64_t>::max();
    if (negative)
        return value;
    return value == lowest ? std::numeric_limits<std::int64_t>::max() : -value;
}

bool PlistValue::boolValue() const
{
    switch (kind()) {
    case Kind::Boolean: return std::get<bool>(_storage);
    case Kind::Integer: return unsignedBits() != 0;
    case Kind::Real: return std::get<double>(_storage) != 0.0;
    case Kind::String: return NSStringBoolValue(std::get<std::string>(_storage));
    default: return false;
    }
}

std::int64_t PlistValue::integerValue() const
{
    switch (kind()) {
    case Kind::Boolean: return std::get<bool>(_storage) ? 1 : 0;
    case Kind::Integer:
        return isLargeUnsigned() ? std::numeric_limits<std::int64_t>::max() : std::get<std::int64_t>(_storage);
    case Kind::Real: {
        double d = std::get<double>(_storage);
        if (std::isnan(d))
            return 0;
        if (d >= 9.2233720368547758e18)
            return std::numeric_limits<std::int64_t>::max();
        if (d <= -9.2233720368547758e18)
            return std::numeric_limits<std::int64_t>::min();
        return static_cast<std::int64_t>(d);
    }
    case Kind::String: return NSStringIntegerValue(std::get<std::string>(_storage));
    default: return 0;
    }
}

double PlistValue::doubleValue() const
{
    switch (kind()) {
    case Kind::Boolean: return std::get<bool>(_storage) ? 1.0 : 0.0;
    case Kind::Integer:
        return isLargeUnsigned() ? static_cast<double>(unsignedBits()) : static_cast<double>(std::get<std::int64_t>(_storage));
    case Kind::Real: return std::get<double>(_storage);
    case Kind::String: {
        const std::string& s = std::get<std::string>(_storage);
        char* end = nullptr;
        double d = std::strtod(s.c_str(), &end);
        return end == s.c_str() ? 0.0 : d;
    }
    default: return 0.0;
    }
}

const std::string& PlistValue::stringValue() const
{
    if (auto s = std::get_if<std::string>(&_storage))
        return *s;
    return emptyString;
}

const PlistArray& PlistValue::arrayValue() const
{
    if (auto a = std::get_if<std::shared_ptr<PlistArray>>(&_storage))
        return **a;
    return emptyArray;
}

const PlistDictionary& PlistValue::dictionaryValue() const
{
    if (auto d = std::get_if<std::shared_ptr<PlistDictionary>>(&_storage))
        return **d;
    return emptyDictionary;
}

PlistDictionary PlistValue::takeDictionary() &&
{
    PlistDictionary taken;
    if (auto d = std::get_if<std::shared_ptr<PlistDictionary>>(&_storage)) {
        if (d->use_count() == 1)
            taken = std::move(**d);
        else
            taken = **d;
    }
    _storage = std::monostate{};
    return taken;
}

const ObjCClass* PlistValue::classValue() const
{
    if (auto c = std::get_if<const ObjCClass*>(&_storage))
        return *c;
    return nullptr;
}

const PlistValue& PlistValue::operator[](std::string_view key) const
{
    const PlistDictionary& d = dictionaryValue();
    auto it = d.find(key);
    return it == d.end() ? nil() : it->second;
}

bool PlistValue::operator==(const PlistValue& other) const
{
    if (isNumber() && other.isNumber()) {
        if (kind() == Kind::Real || other.kind() == Kind::Real)
            return doubleValue() == other.doubleValue();
        // Integers are equal when their values are: 2^64-1 is not -1.
        if (isLargeUnsigned() || other.isLargeUnsigned())
            return isLargeUnsigned() == other.isLargeUnsigned() && unsignedBits() == other.unsignedBits();
        return integerValue() == other.integerValue();
    }
    if (kind() != other.kind())
        return false;
    switch (kind()) {
    case Kind::Array: return arrayValue() == other.arrayValue();
    case Kind::Dictionary: return dictionaryValue() == other.dictionaryValue();
    default: return _storage == other._storage;
    }
}
