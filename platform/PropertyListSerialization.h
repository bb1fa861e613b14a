#pragma once
// NSPropertyListSerialization: property lists to and from bytes, XML or binary ("bplist00").
//
// Every value a property list can hold is read exactly as stored and written back the same:
// integers from -2^63 to 2^64-1, reals and dates as the doubles they are (a binary date keeps its
// fraction and any year), UIDs, data and strings with any character. XML may be UTF-8 (with or
// without a byte-order mark) or UTF-16 with its byte-order mark. Reading and writing take time
// linear in the size of the property list.

#include "platform/PlistValue.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PropertyListSerialization {

enum class Format { XML, Binary };

/// Parses XML or binary property-list bytes; nothing when they are not a property list or fail
/// PropertyListCheck's rules (hostile bytes are refused before any value is made of them: XML is
/// checked first, binary in the walk that reads it).
std::optional<PlistValue> propertyListWithData(std::string_view bytes);
/// Whether propertyListWithData would read the bytes as a dictionary; binary bytes are only
/// checked, no value is made.
bool isDictionaryData(std::string_view bytes);
/// Why the binary reader refuses bytes ("bplist00..."), or nothing when it reads them: the binary
/// half of PropertyListCheck::problem.
std::optional<std::string> binaryProblem(std::string_view bytes);
/// Encodes a value. Class objects and nil, having no property-list form, are left out of arrays
/// and dictionaries; a top level that is neither a property list value becomes an empty dictionary.
/// XML cannot hold every value: a string's control characters are written as character
/// references and a date's fraction of a second as decimals, which only this reader reads back;
/// the binary format holds everything exactly.
std::string dataWithPropertyList(const PlistValue& value, Format format);

/// A binary property list written a part at a time, so that one too large to hold as values whole
/// is never held whole: each part is written as it is added (the same bytes dataWithPropertyList
/// writes for it), and only its reference is kept. Every reference given is a part of the one list.
class BinaryPropertyListWriter {
public:
    using Reference = std::uint64_t;

    BinaryPropertyListWriter();
    ~BinaryPropertyListWriter();
    BinaryPropertyListWriter(const BinaryPropertyListWriter&) = delete;
    BinaryPropertyListWriter& operator=(const BinaryPropertyListWriter&) = delete;

    /// Writes value whole (nil and a class, having no form, as an empty dictionary).
    Reference add(const PlistValue& value);
    /// Writes a data object of bytes.
    Reference addData(std::string_view bytes);
    /// Writes a dictionary of parts already written, by key (in key order; keys distinct).
    Reference addDictionary(std::vector<std::pair<std::string, Reference>> entries);
    /// Ends the list with top as its top level: its bytes, valid while the writer lives. Nothing
    /// may be added after.
    std::string_view finish(Reference top);

private:
    struct Parts;
    std::unique_ptr<Parts> _parts;
};

/// Data as base64 text, as a property list's <data> element holds it (one line, padded with "=").
std::string base64(const std::vector<std::uint8_t>& bytes);

/// A date as ISO 8601 text in UTC ("2001-01-01T00:00:00Z"), with the fraction of a second when
/// it has one ("...:00.25Z"), over any year (before year 1 and after 9999 with more digits or a sign).
std::string iso8601(double secondsSinceReferenceDate);
/// The date of ISO 8601 text as a property list writes it ("YYYY[-MM[-DD[THH[:MM[:SS[.F]]]]]]Z",
/// the year optionally signed and longer); nothing for other text.
std::optional<double> dateFromIso8601(std::string_view text);

}  // namespace PropertyListSerialization
