#pragma once
// One value type for everything a property list, a specifier property or a preference can hold:
// nil, boolean, integer, real, string, data, date, array, dictionary, class object and UID (the
// object reference of a keyed archive, kept as read). Integers run from -2^63 to 2^64-1, as a
// property list stores them.
// Arrays and dictionaries are immutable and shared, as NSArray and NSDictionary are; build a new one
// to change them. Readings (`boolValue`, `integerValue`, `doubleValue`) follow Foundation's rules for
// NSNumber and NSString, and read nil and other kinds as NO / 0.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct ObjCClass;
class PlistValue;

using PlistArray = std::vector<PlistValue>;
using PlistDictionary = std::map<std::string, PlistValue, std::less<>>;

/// Raw bytes of a <data> value.
struct PlistData {
    std::vector<std::uint8_t> bytes;
    bool operator==(const PlistData&) const = default;
};

/// A <date> value: seconds since 2001-01-01 00:00:00 UTC (the reference date of NSDate), with
/// their fraction, over the whole range of a double.
struct PlistDate {
    double secondsSinceReferenceDate = 0;
    bool operator==(const PlistDate&) const = default;
};

/// A UID: a keyed archive's reference to one of its objects.
struct PlistUID {
    std::uint64_t value = 0;
    bool operator==(const PlistUID&) const = default;
};

class PlistValue {
public:
    enum class Kind { Nil, Boolean, Integer, Real, String, Data, Date, Array, Dictionary, Class, UID };

    PlistValue() = default;
    PlistValue(std::nullptr_t) {}
    PlistValue(bool value) : _storage(value) {}
    PlistValue(int value) : _storage(std::int64_t{value}) {}
    PlistValue(long value) : _storage(std::int64_t{value}) {}
    PlistValue(long long value) : _storage(std::int64_t{value}) {}
    PlistValue(double value) : _storage(value) {}
    PlistValue(const char* value) : _storage(std::string(value)) {}
    PlistValue(std::string value) : _storage(std::move(value)) {}
    PlistValue(std::string_view value) : _storage(std::string(value)) {}
    PlistValue(PlistData value) : _storage(std::move(value)) {}
    PlistValue(PlistDate value) : _storage(value) {}
    PlistValue(PlistUID value) : _storage(value) {}
    /// An integer read as unsigned: values up to 2^63-1 are plain integers, larger ones stay unsigned.
    static PlistValue unsignedInteger(std::uint64_t value);
    PlistValue(PlistArray value);
    PlistValue(PlistDictionary value);
    /// A class object; a null class is nil.
    PlistValue(const ObjCClass* cls);

    Kind kind() const;
    bool isNil() const { return kind() == Kind::Nil; }
    explicit operator bool() const = delete;  // say isNil() or boolValue()

    /// NSNumber: non-zero is YES. NSString: YES when, after leading white space, an optional sign
    /// and leading zeroes, the first character is one of Y, y, T, t or a digit 1-9. Anything else: NO.
    bool boolValue() const;
    /// NSNumber: reals are truncated toward zero (2.9 -> 2), booleans are 0 / 1, unsigned integers
    /// past 2^63-1 read as 2^63-1. NSString: the
    /// decimal integer at the start after white space ("3" -> 3, "3.9" -> 3, "x" -> 0), clamped
    /// to the 64-bit range. Anything else: 0.
    std::int64_t integerValue() const;
    /// NSNumber as a real; NSString as the real number at its start (0 when there is none).
    double doubleValue() const;

    /// The string, or "" for any other kind (no description is made up).
    const std::string& stringValue() const;

    bool isBoolean() const { return kind() == Kind::Boolean; }
    bool isNumber() const { return kind() == Kind::Boolean || kind() == Kind::Integer || kind() == Kind::Real; }
    /// An integer of 2^63 or more (kind Integer), as stored.
    bool isLargeUnsigned() const { return std::holds_alternative<LargeUnsigned>(_storage); }
    /// An integer's 64 bits as unsigned (two's complement for negative ones); 0 for other kinds.
    std::uint64_t unsignedBits() const;
    bool isString() const { return kind() == Kind::String; }

    /// Typed access; each returns an empty value (or nullptr) when the kind differs.
    const PlistArray& arrayValue() const;
    const PlistDictionary& dictionaryValue() const;
    /// The dictionary, moved out when this value is its only holder and copied otherwise (another
    /// value shares it); empty for other kinds. This value is left nil.
    PlistDictionary takeDictionary() &&;
    const PlistData* dataValue() const { return std::get_if<PlistData>(&_storage); }
    const PlistDate* dateValue() const { return std::get_if<PlistDate>(&_storage); }
    const PlistUID* uidValue() const { return std::get_if<PlistUID>(&_storage); }
    const ObjCClass* classValue() const;

    /// A dictionary's value for key, or nil (also for other kinds).
    const PlistValue& operator[](std::string_view key) const;

    /// isEqual: numbers compare by value across booleans, integers and reals (integers exactly); the
    /// rest by kind and content.
    bool operator==(const PlistValue& other) const;

    static const PlistValue& nil();

private:
    /// An integer from 2^63 to 2^64-1.
    struct LargeUnsigned {
        std::uint64_t value = 0;
        bool operator==(const LargeUnsigned&) const = default;
    };

    // Containers are shared and never changed once made (only takeDictionary() moves one out of
    // its sole holder).
    std::variant<std::monostate, bool, std::int64_t, double, std::string, PlistData, PlistDate,
                 std::shared_ptr<PlistArray>, std::shared_ptr<PlistDictionary>, const ObjCClass*, PlistUID,
                 LargeUnsigned>
        _storage;
};

/// NSString's boolValue on a string.
bool NSStringBoolValue(std::string_view text);
/// NSString's integerValue on a string.
std::int64_t NSStringIntegerValue(std::string_view text);
