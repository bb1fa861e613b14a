#include "platform/PropertyListSerialization.h"

#include "platform/PropertyListCheck.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace PropertyListSerialization {
namespace {

// ---------------------------------------------------------------------------------------------
// Text helpers

void appendUtf8(std::string& out, std::uint32_t code)
{
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

/// UTF-16 code units (read by unit(i)) as UTF-8; an unpaired surrogate becomes U+FFFD.
template <class Unit> std::string utf16ToUtf8(std::size_t count, Unit unit)
{
    std::string out;
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t code = unit(i);
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < count) {
            std::uint32_t low = unit(i + 1);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            } else {
                code = 0xFFFD;
            }
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            code = 0xFFFD;
        }
        appendUtf8(out, code);
    }
    return out;
}

/// Whether text is all ASCII (read eight bytes at a time).
bool isAscii(std::string_view text)
{
    std::uint64_t seen = 0;
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t eight;
        std::memcpy(&eight, text.data() + i, 8);
        seen |= eight;
    }
    for (; i < text.size(); ++i)
        seen |= static_cast<unsigned char>(text[i]);
    return (seen & 0x8080808080808080ULL) == 0;
}

/// Decodes the UTF-8 character at text[i], advancing i; invalid bytes read as U+FFFD, one each.
std::uint32_t nextCodePoint(std::string_view text, std::size_t& i)
{
    auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    std::uint8_t lead = byte(i);
    std::size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
    if (length == 1) {
        ++i;
        return lead;
    }
    if (length == 0 || i + length > text.size()) {
        ++i;
        return 0xFFFD;
    }
    std::uint32_t code = lead & (0xFF >> (length + 1));
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) {
            ++i;
            return 0xFFFD;
        }
        code = (code << 6) | (byte(i + k) & 0x3F);
    }
    static constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        ++i;
        return 0xFFFD;
    }
    i += length;
    return code;
}

/// UTF-16 text (after its byte-order mark) as UTF-8.
std::string utf16TextToUtf8(std::string_view bytes, bool bigEndian)
{
    auto unit = [&](std::size_t i) -> std::uint32_t {
        auto a = static_cast<std::uint8_t>(bytes[2 * i]), b = static_cast<std::uint8_t>(bytes[2 * i + 1]);
        return bigEndian ? (a << 8 | b) : (b << 8 | a);
    };
    return utf16ToUtf8(bytes.size() / 2, unit);
}

// ---------------------------------------------------------------------------------------------
// Dates: days from the civil calendar and back, over any year (proleptic Gregorian).

constexpr std::int64_t kReferenceDays = 11323;  // 2001-01-01 in days since 1970-01-01

std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void civilFromDays(std::int64_t z, std::int64_t& y, unsigned& m, unsigned& d)
{
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const auto doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y += m <= 2;
}

// ---------------------------------------------------------------------------------------------
// Binary reading

constexpr std::string_view kBinaryMagic = "bplist00";

/// Reads a binary property list in one walk that also checks it, so that hostile bytes cost no
/// more than the walk: every offset and reference inside the file, no NUL in a string, no
/// container that contains itself, containers nested at most PropertyListCheck::kMaxDepth deep
/// (the recursion stops there), and at most kMaxNodes nodes and kMaxExpandedBytes bytes of
/// strings and data once every reference is expanded into its own copy (counted per container, a
/// shared one once). With Build it makes the values: a container referred to again is shared, as
/// it was read the first time; leaves are read again (it costs what a copy would). Without, it
/// only checks, and answers the top object's marker type.
template <bool Build>
class BinaryReader {
public:
    using Value = std::conditional_t<Build, PlistValue, unsigned>;

    explicit BinaryReader(std::string_view bytes)
        : _bytes(bytes)
    {
    }

    /// The top-level value, or nothing when the bytes are not a property list (problem() says why).
    std::optional<Value> read()
    {
        if (_bytes.size() < kBinaryMagic.size() + 1 + 32)
            return refuse("a binary plist too short for its trailer");
        std::size_t trailer = _bytes.size() - 32;
        _offsetSize = byte(trailer + 6);
        _refSize = byte(trailer + 7);
        _count = number(trailer + 8, 8);
        std::uint64_t top = number(trailer + 16, 8);
        _table = number(trailer + 24, 8);
        if (_offsetSize < 1 || _offsetSize > 8 || _refSize < 1 || _refSize > 8)
            return refuse("a binary plist with a bad offset or reference size");
        if (_count == 0 || top >= _count || _table < kBinaryMagic.size() || _table >= trailer ||
            _count > (trailer - _table) / _offsetSize)
            return refuse("a binary plist with a bad offset table");
        _state.assign(_count, Unseen);
        auto read = object(top, 0);
        if (!read)
            return std::nullopt;
        return std::move(read->value);
    }

    const std::string& problem() const { return _problem; }

private:
    /// Where an object lies: its type, the low half of its marker, its count (of bytes, units or
    /// references) and where its content starts.
    struct Header {
        unsigned type = 0, low = 0;
        std::uint64_t length = 0, content = 0;
    };
    /// What an object comes to once every reference in it is expanded into its own copy: values
    /// and keys, bytes of strings and data, and the containers nested in it (itself included).
    struct Totals {
        std::uint64_t nodes = 0, bytes = 0, depth = 0;
    };
    struct Read {
        Value value{};
        Totals totals;
    };
    /// Only containers are marked: a leaf met again is read again.
    enum : std::uint8_t { Unseen, Open, Done };

    std::nullopt_t refuse(std::string why)
    {
        _problem = std::move(why);
        return std::nullopt;
    }

    std::uint8_t byte(std::uint64_t at) const { return static_cast<std::uint8_t>(_bytes[at]); }

    std::uint64_t number(std::uint64_t at, std::size_t size) const
    {
        const auto* p = reinterpret_cast<const std::uint8_t*>(_bytes.data() + at);
        switch (size) {
        case 1: return p[0];
        case 2: return std::uint64_t{p[0]} << 8 | p[1];
        default: break;
        }
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = (value << 8) | p[i];
        return value;
    }

    double real(std::uint64_t at, std::size_t size) const
    {
        if (size == 4)
            return std::bit_cast<float>(static_cast<std::uint32_t>(number(at, 4)));
        return std::bit_cast<double>(number(at, 8));
    }

    /// Units of unit bytes that fit between the content and the offset table.
    bool fits(const Header& header, std::uint64_t units, std::uint64_t unit) const
    {
        return units <= (_table - header.content) / unit;
    }

    std::optional<Header> header(std::uint64_t index)
    {
        const std::uint64_t end = _table;
        std::uint64_t at = number(_table + index * _offsetSize, _offsetSize);
        if (at < kBinaryMagic.size() || at >= end)
            return refuse("an object outside the file");
        std::uint8_t marker = byte(at);
        Header h{static_cast<unsigned>(marker >> 4), static_cast<unsigned>(marker & 0x0F), 0, at + 1};
        h.length = h.low;
        const unsigned type = h.type;
        if ((type == 0x4 || type == 0x5 || type == 0x6 || type == 0x7 || type == 0xA || type == 0xD) && h.low == 0x0F) {
            if (h.content >= end)
                return refuse("an object outside the file");
            std::uint8_t sizeMarker = byte(h.content);
            std::size_t size = std::size_t{1} << (sizeMarker & 0x0F);
            if ((sizeMarker >> 4) != 0x1 || size > 8 || end - h.content - 1 < size)
                return refuse("an object outside the file");
            h.length = number(h.content + 1, size);
            h.content += 1 + size;
        }
        return h;
    }

    /// Adds a child's totals into its container's; false (with the problem) past a bound.
    bool add(Totals& totals, const Totals& child)
    {
        totals.nodes = std::min<std::uint64_t>(totals.nodes + child.nodes, PropertyListCheck::kMaxNodes + 1);
        totals.bytes = std::min<std::uint64_t>(totals.bytes + child.bytes, PropertyListCheck::kMaxExpandedBytes + 1);
        totals.depth = std::max(totals.depth, child.depth);
        if (totals.nodes > PropertyListCheck::kMaxNodes) {
            refuse("more than " + std::to_string(PropertyListCheck::kMaxNodes) + " values once its references are expanded");
            return false;
        }
        if (totals.bytes > PropertyListCheck::kMaxExpandedBytes) {
            refuse("more than " + std::to_string(PropertyListCheck::kMaxExpandedBytes >> 20) +
                   " MiB once its references are expanded");
            return false;
        }
        return true;
    }

    std::nullopt_t tooDeep()
    {
        return refuse("containers nested deeper than " + std::to_string(PropertyListCheck::kMaxDepth) + " levels");
    }

    /// Checks a string object (ASCII, Latin-1 or UTF-16 in the file): inside the file and without
    /// NUL. Its expanded size (as UTF-8 at most), or nothing.
    std::optional<std::uint64_t> checkText(const Header& h)
    {
        switch (h.type) {
        case 0x5:
        case 0x7:
            if (!fits(h, h.length, 1))
                return refuse("an object outside the file");
            if (std::memchr(_bytes.data() + h.content, 0, h.length))
                return refuse("a string holding a NUL byte");
            return h.length;
        case 0x6:
            if (!fits(h, h.length, 2))
                return refuse("an object outside the file");
            for (std::uint64_t i = 0; i < h.length; ++i)
                if (_bytes[h.content + 2 * i] == 0 && _bytes[h.content + 2 * i + 1] == 0)
                    return refuse("a string holding a NUL character");
            return h.length * 3;
        default:
            return refuse("a dictionary key that is no string");
        }
    }

    /// A checked string object's text as UTF-8.
    void text(const Header& h, std::string& out) const
    {
        if (h.type == 0x6) {
            out = utf16ToUtf8(h.length, [&](std::size_t i) { return static_cast<std::uint32_t>(number(h.content + 2 * i, 2)); });
            return;
        }
        std::string_view bytes = _bytes.substr(h.content, h.length);
        if (h.type == 0x7 || isAscii(bytes)) {
            out.assign(bytes);
            return;
        }
        out.clear();  // bytes past ASCII are Latin-1 characters
        for (char c : bytes)
            appendUtf8(out, static_cast<std::uint8_t>(c));
    }

    /// Object index, nested in depth containers.
    std::optional<Read> object(std::uint64_t index, std::size_t depth)
    {
        if (index >= _count)
            return refuse("a reference to an object that does not exist");
        auto h = header(index);
        if (!h)
            return std::nullopt;
        if (h->type != 0xA && h->type != 0xD)
            return leaf(*h);
        if (_state[index] == Open)
            return refuse("a container that contains itself");
        if (_state[index] == Done) {
            const Read& seen = _containers.find(index)->second;
            if (depth + seen.totals.depth > PropertyListCheck::kMaxDepth)
                return tooDeep();
            return seen;
        }
        if (depth + 1 > PropertyListCheck::kMaxDepth)
            return tooDeep();
        _state[index] = Open;
        auto read = h->type == 0xA ? array(*h, depth + 1) : dictionary(*h, depth + 1);
        if (!read)
            return std::nullopt;
        read->totals.depth += 1;
        _state[index] = Done;
        _containers.emplace(index, *read);
        return read;
    }

    std::optional<Read> array(const Header& h, std::size_t depth)
    {
        if (!fits(h, h.length, _refSize))
            return refuse("an object outside the file");
        Totals totals{1, 0, 0};
        PlistArray array;
        if constexpr (Build)
            array.reserve(h.length);
        for (std::uint64_t i = 0; i < h.length; ++i) {
            auto item = object(number(h.content + i * _refSize, _refSize), depth);
            if (!item || !add(totals, item->totals))
                return std::nullopt;
            if constexpr (Build)
                array.push_back(std::move(item->value));
        }
        if constexpr (Build)
            return Read{PlistValue(std::move(array)), totals};
        else
            return Read{h.type, totals};
    }

    std::optional<Read> dictionary(const Header& h, std::size_t depth)
    {
        if (!fits(h, h.length, 2 * std::uint64_t{_refSize}))
            return refuse("an object outside the file");
        Totals totals{1, 0, 0};
        PlistDictionary dictionary;
        const std::uint64_t values = h.content + h.length * _refSize;
        std::string key;
        for (std::uint64_t i = 0; i < h.length; ++i) {
            std::uint64_t keyIndex = number(h.content + i * _refSize, _refSize);
            if (keyIndex >= _count)
                return refuse("a reference to an object that does not exist");
            auto keyHeader = header(keyIndex);
            if (!keyHeader)
                return std::nullopt;
            auto keyBytes = checkText(*keyHeader);
            if (!keyBytes || !add(totals, {1, *keyBytes, 0}))
                return std::nullopt;
            auto item = object(number(values + i * _refSize, _refSize), depth);
            if (!item || !add(totals, item->totals))
                return std::nullopt;
            if constexpr (Build) {
                text(*keyHeader, key);
                // Keys usually come in order (sorted by the writer): then each goes in at the end.
                dictionary.insert_or_assign(dictionary.end(), std::move(key), std::move(item->value));
            }
        }
        if constexpr (Build)
            return Read{PlistValue(std::move(dictionary)), totals};
        else
            return Read{h.type, totals};
    }

    /// A leaf object: checked, then made (with Build) by make().
    template <class Make>
    std::optional<Read> made(const Header& h, std::uint64_t bytes, Make make)
    {
        if constexpr (Build)
            return Read{make(), {1, bytes, 0}};
        else
            return Read{h.type, {1, bytes, 0}};
    }

    std::optional<Read> leaf(const Header& h)
    {
        const unsigned low = h.low;
        switch (h.type) {
        case 0x0:
            if (low == 0x8 || low == 0x9)
                return made(h, 0, [&] { return PlistValue(low == 0x9); });
            break;  // null and fill are no values of a property list
        case 0x1: {
            if (low > 4 || !fits(h, std::uint64_t{1} << low, 1))
                return refuse("an object outside the file");
            if (low < 3)
                return made(h, 0, [&] { return PlistValue(static_cast<long long>(number(h.content, std::size_t{1} << low))); });
            if (low == 3)
                return made(h, 0, [&] { return PlistValue(static_cast<long long>(static_cast<std::int64_t>(number(h.content, 8)))); });
            // 128 bits: what a 64-bit value, signed or unsigned, makes; nothing wider is kept.
            std::uint64_t high = number(h.content, 8), lowBits = number(h.content + 8, 8);
            if (high == 0)
                return made(h, 0, [&] { return PlistValue::unsignedInteger(lowBits); });
            if (high == ~std::uint64_t{0} && (lowBits >> 63))
                return made(h, 0, [&] { return PlistValue(static_cast<long long>(static_cast<std::int64_t>(lowBits))); });
            break;
        }
        case 0x2:
            if (low > 4 || !fits(h, std::uint64_t{1} << low, 1))
                return refuse("an object outside the file");
            if (low == 2 || low == 3)
                return made(h, 0, [&] { return PlistValue(real(h.content, std::size_t{1} << low)); });
            break;
        case 0x3:
            if (!fits(h, 8, 1))
                return refuse("an object outside the file");
            if (low == 3)
                return made(h, 0, [&] { return PlistValue(PlistDate{real(h.content, 8)}); });
            break;
        case 0x4: {
            if (!fits(h, h.length, 1))
                return refuse("an object outside the file");
            auto first = reinterpret_cast<const std::uint8_t*>(_bytes.data() + h.content);
            return made(h, h.length, [&] { return PlistValue(PlistData{std::vector<std::uint8_t>(first, first + h.length)}); });
        }
        case 0x5:
        case 0x6:
        case 0x7: {
            auto bytes = checkText(h);
            if (!bytes)
                return std::nullopt;
            return made(h, *bytes, [&] {
                std::string out;
                text(h, out);
                return PlistValue(std::move(out));
            });
        }
        case 0x8:
            if (!fits(h, low + 1, 1))
                return refuse("an object outside the file");
            if (low <= 7)
                return made(h, 0, [&] { return PlistValue(PlistUID{number(h.content, low + 1)}); });
            break;
        default:
            break;  // sets and unknown markers
        }
        return refuse("an object that is no property-list value");
    }

    std::string_view _bytes;
    std::uint8_t _offsetSize = 0, _refSize = 0;
    std::uint64_t _count = 0, _table = 0;
    std::vector<std::uint8_t> _state;
    std::unordered_map<std::uint64_t, Read> _containers;
    std::string _problem;
};

// ---------------------------------------------------------------------------------------------
// Binary writing

/// Writes a binary property list in one walk over the value: leaves are written as they are met,
/// containers (whose references take a size that depends on the number of objects) once every
/// object is known, after the leaves.
class BinaryWriter {
public:
    BinaryWriter() { std::memcpy(grow(kBinaryMagic.size()), kBinaryMagic.data(), kBinaryMagic.size()); }

    std::string write(const PlistValue& top) { return std::string(finish(emit(top))); }

    /// Writes a data object of bytes; its object index.
    std::uint64_t emitData(std::string_view bytes)
    {
        std::uint64_t index = begin();
        appendHeader(0x4, bytes.size());
        if (!bytes.empty())
            std::memcpy(grow(bytes.size()), bytes.data(), bytes.size());
        return index;
    }

    /// Writes a dictionary of objects already written, in key order; its object index.
    std::uint64_t emitDictionary(std::vector<std::pair<std::string, std::uint64_t>> entries)
    {
        std::sort(entries.begin(), entries.end());
        std::uint64_t index = begin();
        std::size_t first = _refs.size();
        _refs.resize(first + 2 * entries.size());
        std::size_t at = first;
        for (auto& entry : entries)
            _refs[at++] = emitString(entry.first);
        for (auto& entry : entries)
            _refs[at++] = entry.second;
        _containers.push_back({index, 0xD, entries.size(), first});
        return index;
    }

    /// Ends the property list with object top as its top level: the whole of it, valid while the
    /// writer lives.
    std::string_view finish(std::uint64_t topIndex)
    {
        const std::uint64_t count = _offsets.size();
        const std::uint8_t refSize = sizeFor(count > 0 ? count - 1 : 0);
        for (const Container& container : _containers) {
            _offsets[container.index] = _used;
            appendHeader(container.type, container.length);
            const std::size_t refs = container.type == 0xD ? 2 * container.length : container.length;
            char* at = grow(refs * refSize);
            for (std::size_t i = 0; i < refs; ++i, at += refSize)
                putNumber(at, _refs[container.firstRef + i], refSize);
        }
        const std::uint64_t table = _used;
        const std::uint8_t offsetSize = sizeFor(_offsets.empty() ? 0 : *std::max_element(_offsets.begin(), _offsets.end()));
        char* at = grow(count * offsetSize);
        for (std::uint64_t offset : _offsets) {
            putNumber(at, offset, offsetSize);
            at += offsetSize;
        }
        at = grow(32);
        std::memset(at, 0, 6);
        at[6] = static_cast<char>(offsetSize);
        at[7] = static_cast<char>(refSize);
        putNumber(at + 8, count, 8);
        putNumber(at + 16, topIndex, 8);
        putNumber(at + 24, table, 8);
        return {_out.get(), _used};
    }

private:
    /// A container, written after the leaves: its object index, marker type, entries (pairs for a
    /// dictionary) and where its references (keys, then values) start in _refs.
    struct Container {
        std::uint64_t index;
        unsigned type;
        std::uint64_t length;
        std::size_t firstRef;
    };

    static bool writable(const PlistValue& value)
    {
        auto kind = value.kind();
        return kind != PlistValue::Kind::Nil && kind != PlistValue::Kind::Class;
    }

    static std::uint8_t sizeFor(std::uint64_t largest)
    {
        return largest <= 0xFF ? 1 : largest <= 0xFFFF ? 2 : largest <= 0xFFFFFFFF ? 4 : 8;
    }

    /// Room for size more bytes at the end of the output (left as it is: every byte is written).
    char* grow(std::size_t size)
    {
        if (_capacity - _used < size) {
            std::size_t capacity = std::max(_capacity * 2, _used + size + 256);
            auto larger = std::make_unique_for_overwrite<char[]>(capacity);
            if (_used > 0)
                std::memcpy(larger.get(), _out.get(), _used);
            _out = std::move(larger);
            _capacity = capacity;
        }
        char* at = _out.get() + _used;
        _used += size;
        return at;
    }

    static void putNumber(char* at, std::uint64_t value, std::size_t size)
    {
        for (std::size_t i = size; i-- > 0; value >>= 8)
            at[i] = static_cast<char>(value & 0xFF);
    }

    void appendNumber(std::uint64_t value, std::size_t size) { putNumber(grow(size), value, size); }

    void appendHeader(unsigned type, std::uint64_t length)
    {
        if (length < 15) {
            *grow(1) = static_cast<char>(type << 4 | length);
            return;
        }
        std::uint8_t size = sizeFor(length);
        char* at = grow(2 + size);
        at[0] = static_cast<char>(type << 4 | 0x0F);
        at[1] = static_cast<char>(0x10 | std::countr_zero(size));
        putNumber(at + 2, length, size);
    }

    std::uint64_t begin()
    {
        _offsets.push_back(_used);
        return _offsets.size() - 1;
    }

    std::uint64_t emitString(std::string_view text)
    {
        std::uint64_t index = begin();
        if (isAscii(text)) {
            appendHeader(0x5, text.size());
            std::memcpy(grow(text.size()), text.data(), text.size());
            return index;
        }
        std::vector<std::uint16_t> units;
        units.reserve(text.size());
        for (std::size_t i = 0; i < text.size();) {
            std::uint32_t code = nextCodePoint(text, i);
            if (code >= 0x10000) {
                code -= 0x10000;
                units.push_back(static_cast<std::uint16_t>(0xD800 + (code >> 10)));
                units.push_back(static_cast<std::uint16_t>(0xDC00 + (code & 0x3FF)));
            } else {
                units.push_back(static_cast<std::uint16_t>(code));
            }
        }
        appendHeader(0x6, units.size());
        char* at = grow(2 * units.size());
        for (std::uint16_t unit : units) {
            putNumber(at, unit, 2);
            at += 2;
        }
        return index;
    }

public:
    /// Writes value whole (leaves now, containers at the end); its object index.
    std::uint64_t emit(const PlistValue& value)
    {
        using Kind = PlistValue::Kind;
        switch (value.kind()) {
        case Kind::Array: {
            const PlistArray& items = value.arrayValue();
            std::uint64_t index = begin();
            std::size_t length = 0;
            for (const PlistValue& item : items)
                length += writable(item);
            std::size_t first = _refs.size();
            _refs.resize(first + length);
            std::size_t at = first;
            for (const PlistValue& item : items)
                if (writable(item)) {
                    std::uint64_t ref = emit(item);  // may grow _refs: written by position
                    _refs[at++] = ref;
                }
            _containers.push_back({index, 0xA, length, first});
            return index;
        }
        case Kind::Dictionary: {
            const PlistDictionary& items = value.dictionaryValue();
            std::uint64_t index = begin();
            std::size_t length = 0;
            for (const auto& [key, item] : items)
                length += writable(item);
            std::size_t first = _refs.size();
            _refs.resize(first + 2 * length);
            std::size_t at = first;
            for (const auto& [key, item] : items)
                if (writable(item))
                    _refs[at++] = emitString(key);
            for (const auto& [key, item] : items)
                if (writable(item)) {
                    std::uint64_t ref = emit(item);
                    _refs[at++] = ref;
                }
            _containers.push_back({index, 0xD, length, first});
            return index;
        }
        case Kind::String: return emitString(value.stringValue());
        default: break;
        }
        std::uint64_t index = begin();
        switch (value.kind()) {
        case Kind::Boolean: *grow(1) = value.boolValue() ? '\x09' : '\x08'; break;
        case Kind::Integer: {
            std::uint64_t bits = value.unsignedBits();
            if (value.isLargeUnsigned()) {
                char* at = grow(17);
                at[0] = '\x14';
                putNumber(at + 1, 0, 8);
                putNumber(at + 9, bits, 8);
            } else if (static_cast<std::int64_t>(bits) < 0 || bits > 0xFFFFFFFF) {
                char* at = grow(9);
                at[0] = '\x13';
                putNumber(at + 1, bits, 8);
            } else {
                std::uint8_t size = sizeFor(bits);
                char* at = grow(1 + size);
                at[0] = static_cast<char>(0x10 | std::countr_zero(size));
                putNumber(at + 1, bits, size);
            }
            break;
        }
        case Kind::Real: {
            char* at = grow(9);
            at[0] = '\x23';
            putNumber(at + 1, std::bit_cast<std::uint64_t>(value.doubleValue()), 8);
            break;
        }
        case Kind::Date: {
            char* at = grow(9);
            at[0] = '\x33';
            putNumber(at + 1, std::bit_cast<std::uint64_t>(value.dateValue()->secondsSinceReferenceDate), 8);
            break;
        }
        case Kind::Data: {
            const auto& bytes = value.dataValue()->bytes;
            appendHeader(0x4, bytes.size());
            if (!bytes.empty())
                std::memcpy(grow(bytes.size()), bytes.data(), bytes.size());
            break;
        }
        case Kind::UID: {
            std::uint64_t uid = value.uidValue()->value;
            std::uint8_t size = sizeFor(uid);
            char* at = grow(1 + size);
            at[0] = static_cast<char>(0x80 | (size - 1));
            putNumber(at + 1, uid, size);
            break;
        }
        default:  // nil and classes never reach here (the top level is a dictionary then)
            *grow(1) = '\xD0';
            break;
        }
        return index;
    }

private:
    std::unique_ptr<char[]> _out;
    std::size_t _capacity = 0, _used = 0;
    std::vector<std::uint64_t> _offsets;
    std::vector<std::uint64_t> _refs;
    std::vector<Container> _containers;
};

// ---------------------------------------------------------------------------------------------
// XML reading

class XmlReader {
public:
    explicit XmlReader(std::string_view text)
        : _text(text)
    {
    }

    std::optional<PlistValue> read()
    {
        if (!skipMisc())
            return std::nullopt;
        Tag tag;
        if (!openTag(tag))
            return std::nullopt;
        std::optional<PlistValue> value;
        if (tag.name == "plist") {
            if (tag.empty)
                return std::nullopt;
            if (!skipMisc())
                return std::nullopt;
            Tag inner;
            if (!openTag(inner) || !(value = valueOf(inner, 0)) || !skipMisc() || !closeTag("plist"))
                return std::nullopt;
        } else if (!(value = valueOf(tag, 0))) {
            return std::nullopt;
        }
        if (!skipMisc() || _at != _text.size())
            return std::nullopt;
        return value;
    }

private:
    struct Tag {
        std::string_view name;
        bool empty = false;
    };

    static bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

    /// Skips white space, comments, processing instructions and the document type.
    bool skipMisc()
    {
        for (;;) {
            while (_at < _text.size() && isSpace(_text[_at]))
                ++_at;
            std::string_view rest = _text.substr(_at);
            std::string_view end;
            if (rest.starts_with("<!--"))
                end = "-->";
            else if (rest.starts_with("<?"))
                end = "?>";
            else if (rest.starts_with("<!DOCTYPE"))
                end = ">";
            else
                return true;
            std::size_t found = _text.find(end, _at + 2);
            if (found == std::string_view::npos)
                return false;
            _at = found + end.size();
        }
    }

    /// Reads "<name attributes>" or "<name/>".
    bool openTag(Tag& tag)
    {
        if (_at >= _text.size() || _text[_at] != '<' || _at + 1 >= _text.size() || _text[_at + 1] == '/')
            return false;
        std::size_t close = _text.find('>', _at);
        if (close == std::string_view::npos)
            return false;
        std::string_view inside = _text.substr(_at + 1, close - _at - 1);
        tag.empty = !inside.empty() && inside.back() == '/';
        if (tag.empty)
            inside.remove_suffix(1);
        std::size_t nameEnd = 0;
        while (nameEnd < inside.size() && !isSpace(inside[nameEnd]))
            ++nameEnd;
        tag.name = inside.substr(0, nameEnd);
        _at = close + 1;
        return !tag.name.empty();
    }

    bool closeTag(std::string_view name)
    {
        std::string_view rest = _text.substr(_at);
        if (!rest.starts_with("</") || !rest.substr(2).starts_with(name))
            return false;
        std::size_t i = _at + 2 + name.size();
        while (i < _text.size() && isSpace(_text[i]))
            ++i;
        if (i >= _text.size() || _text[i] != '>')
            return false;
        _at = i + 1;
        return true;
    }

    /// The character data up to the closing tag of name, entities and CDATA decoded.
    std::optional<std::string> textUntilClose(const Tag& tag)
    {
        std::string out;
        if (tag.empty)
            return out;
        for (;;) {
            if (_at >= _text.size())
                return std::nullopt;
            char c = _text[_at];
            if (c == '<') {
                std::string_view rest = _text.substr(_at);
                if (rest.starts_with("<![CDATA[")) {
                    std::size_t end = _text.find("]]>", _at + 9);
                    if (end == std::string_view::npos)
                        return std::nullopt;
                    out.append(_text.substr(_at + 9, end - _at - 9));
                    _at = end + 3;
                    continue;
                }
                if (rest.starts_with("<!--")) {
                    std::size_t end = _text.find("-->", _at + 4);
                    if (end == std::string_view::npos)
                        return std::nullopt;
                    _at = end + 3;
                    continue;
                }
                if (!closeTag(tag.name))
                    return std::nullopt;
                return out;
            }
            if (c == '&') {
                std::size_t semicolon = _text.find(';', _at);
                if (semicolon == std::string_view::npos || semicolon - _at > 12)
                    return std::nullopt;
                std::string_view entity = _text.substr(_at + 1, semicolon - _at - 1);
                if (entity == "lt")
                    out.push_back('<');
                else if (entity == "gt")
                    out.push_back('>');
                else if (entity == "amp")
                    out.push_back('&');
                else if (entity == "quot")
                    out.push_back('"');
                else if (entity == "apos")
                    out.push_back('\'');
                else if (entity.size() > 1 && entity[0] == '#') {
                    bool hex = entity[1] == 'x' || entity[1] == 'X';
                    std::string_view digits = entity.substr(hex ? 2 : 1);
                    std::uint32_t code = 0;
                    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
                    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size() || code == 0 ||
                        code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
                        return std::nullopt;
                    appendUtf8(out, code);
                } else {
                    return std::nullopt;
                }
                _at = semicolon + 1;
                continue;
            }
            std::size_t next = _text.find_first_of("<&", _at);
            if (next == std::string_view::npos)
                next = _text.size();
            out.append(_text.substr(_at, next - _at));
            _at = next;
        }
    }

    static std::string_view trimmed(std::string_view text)
    {
        while (!text.empty() && isSpace(text.front()))
            text.remove_prefix(1);
        while (!text.empty() && isSpace(text.back()))
            text.remove_suffix(1);
        return text;
    }

    static std::optional<PlistValue> integer(std::string_view text)
    {
        text = trimmed(text);
        bool negative = !text.empty() && text[0] == '-';
        if (!text.empty() && (text[0] == '-' || text[0] == '+'))
            text.remove_prefix(1);
        int base = 10;
        if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
            base = 16;
            text.remove_prefix(2);
        }
        std::uint64_t magnitude = 0;
        auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
        if (text.empty() || error != std::errc() || end != text.data() + text.size())
            return std::nullopt;
        if (!negative)
            return PlistValue::unsignedInteger(magnitude);
        if (magnitude > std::uint64_t{1} << 63)
            return std::nullopt;
        return PlistValue(static_cast<long long>(0 - magnitude));
    }

    static std::optional<PlistValue> real(std::string_view text)
    {
        std::string value(trimmed(text));
        std::string lower;
        for (char c : value)
            lower.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
        if (lower == "nan")
            return PlistValue(std::numeric_limits<double>::quiet_NaN());
        if (lower == "inf" || lower == "+inf" || lower == "infinity" || lower == "+infinity")
            return PlistValue(std::numeric_limits<double>::infinity());
        if (lower == "-inf" || lower == "-infinity")
            return PlistValue(-std::numeric_limits<double>::infinity());
        // strtod, not from_chars: a subnormal number reads as itself, not as out of range.
        if (value.empty() || std::isspace(static_cast<unsigned char>(value[0])))
            return std::nullopt;
        char* end = nullptr;
        double d = std::strtod(value.c_str(), &end);
        if (end != value.c_str() + value.size())
            return std::nullopt;
        return PlistValue(d);
    }

    static std::optional<PlistValue> data(std::string_view text)
    {
        static constexpr std::array<std::int8_t, 256> decode = [] {
            std::array<std::int8_t, 256> table{};
            table.fill(-1);
            const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
            for (int i = 0; i < 64; ++i)
                table[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::int8_t>(i);
            return table;
        }();
        PlistData result;
        result.bytes.reserve(text.size() * 3 / 4);
        std::uint32_t buffer = 0;
        int bits = 0;
        for (char c : text) {
            if (isSpace(c) || c == '=')
                continue;
            std::int8_t v = decode[static_cast<std::uint8_t>(c)];
            if (v < 0)
                return std::nullopt;
            buffer = (buffer << 6) | static_cast<std::uint32_t>(v);
            bits += 6;
            if (bits >= 8) {
                bits -= 8;
                result.bytes.push_back(static_cast<std::uint8_t>((buffer >> bits) & 0xFF));
            }
        }
        return PlistValue(std::move(result));
    }

    std::optional<PlistValue> valueOf(const Tag& tag, std::size_t depth)
    {
        if (depth > PropertyListCheck::kMaxDepth)
            return std::nullopt;
        std::string_view name = tag.name;
        if (name == "true" || name == "false") {
            if (!tag.empty && !closeTag(name))
                return std::nullopt;
            return PlistValue(name == "true");
        }
        if (name == "array")
            return array(tag, depth);
        if (name == "dict")
            return dictionary(tag, depth);
        auto text = textUntilClose(tag);
        if (!text)
            return std::nullopt;
        if (name == "string")
            return PlistValue(std::move(*text));
        if (name == "integer")
            return integer(*text);
        if (name == "real")
            return real(*text);
        if (name == "data")
            return data(*text);
        if (name == "date") {
            auto seconds = dateFromIso8601(trimmed(*text));
            if (!seconds)
                return std::nullopt;
            return PlistValue(PlistDate{*seconds});
        }
        return std::nullopt;
    }

    std::optional<PlistValue> array(const Tag& tag, std::size_t depth)
    {
        PlistArray items;
        if (tag.empty)
            return PlistValue(std::move(items));
        for (;;) {
            if (!skipMisc())
                return std::nullopt;
            if (closeTag("array"))
                return PlistValue(std::move(items));
            Tag inner;
            if (!openTag(inner))
                return std::nullopt;
            auto item = valueOf(inner, depth + 1);
            if (!item)
                return std::nullopt;
            items.push_back(std::move(*item));
        }
    }

    std::optional<PlistValue> dictionary(const Tag& tag, std::size_t depth)
    {
        PlistDictionary items;
        if (tag.empty)
            return PlistValue(std::move(items));
        for (;;) {
            if (!skipMisc())
                return std::nullopt;
            if (closeTag("dict"))
                break;
            Tag keyTag;
            if (!openTag(keyTag) || keyTag.name != "key")
                return std::nullopt;
            auto key = textUntilClose(keyTag);
            if (!key || !skipMisc())
                return std::nullopt;
            Tag inner;
            if (!openTag(inner))
                return std::nullopt;
            auto item = valueOf(inner, depth + 1);
            if (!item)
                return std::nullopt;
            items.insert_or_assign(std::move(*key), std::move(*item));
        }
        // A keyed archive's reference in XML: a dictionary holding only the integer "CF$UID".
        if (items.size() == 1 && items.begin()->first == "CF$UID" && items.begin()->second.kind() == PlistValue::Kind::Integer &&
            !(items.begin()->second.integerValue() < 0))
            return PlistValue(PlistUID{items.begin()->second.unsignedBits()});
        return PlistValue(std::move(items));
    }

    std::string_view _text;
    std::size_t _at = 0;
};

// ---------------------------------------------------------------------------------------------
// XML writing

class XmlWriter {
public:
    std::string write(const PlistValue& top)
    {
        _out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n";
        emit(top, 0);
        _out += "</plist>\n";
        return std::move(_out);
    }

private:
    void indent(std::size_t depth) { _out.append(depth, '\t'); }

    void escaped(std::string_view text)
    {
        for (std::size_t i = 0; i < text.size(); ++i) {
            char c = text[i];
            switch (c) {
            case '&': _out += "&amp;"; break;
            case '<': _out += "&lt;"; break;
            case '>': _out += "&gt;"; break;
            default:
                if (static_cast<std::uint8_t>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') {
                    char reference[8];
                    std::snprintf(reference, sizeof reference, "&#x%X;", static_cast<unsigned>(c));
                    _out += reference;
                } else {
                    _out.push_back(c);
                }
            }
        }
    }

    void element(std::size_t depth, std::string_view name, std::string_view text)
    {
        indent(depth);
        _out += '<';
        _out += name;
        _out += '>';
        _out += text;
        _out += "</";
        _out += name;
        _out += ">\n";
    }

    void emit(const PlistValue& value, std::size_t depth)
    {
        using Kind = PlistValue::Kind;
        switch (value.kind()) {
        case Kind::Nil:
        case Kind::Class:
            if (depth == 0) {
                _out += "<dict/>\n";
            }
            return;
        case Kind::Boolean:
            indent(depth);
            _out += value.boolValue() ? "<true/>\n" : "<false/>\n";
            return;
        case Kind::Integer:
            element(depth, "integer",
                    value.isLargeUnsigned() ? std::to_string(value.unsignedBits()) : std::to_string(value.integerValue()));
            return;
        case Kind::Real: {
            double d = value.doubleValue();
            if (std::isnan(d))
                element(depth, "real", "nan");
            else if (std::isinf(d))
                element(depth, "real", d > 0 ? "+infinity" : "-infinity");
            else {
                char text[40];
                auto result = std::to_chars(text, text + sizeof text, d);
                element(depth, "real", std::string_view(text, static_cast<std::size_t>(result.ptr - text)));
            }
            return;
        }
        case Kind::String:
            indent(depth);
            _out += "<string>";
            escaped(value.stringValue());
            _out += "</string>\n";
            return;
        case Kind::Data:
            element(depth, "data", base64(value.dataValue()->bytes));
            return;
        case Kind::Date:
            element(depth, "date", iso8601(value.dateValue()->secondsSinceReferenceDate));
            return;
        case Kind::UID:
            indent(depth);
            _out += "<dict>\n";
            element(depth + 1, "key", "CF$UID");
            element(depth + 1, "integer", std::to_string(value.uidValue()->value));
            indent(depth);
            _out += "</dict>\n";
            return;
        case Kind::Array:
            indent(depth);
            if (value.arrayValue().empty()) {
                _out += "<array/>\n";
                return;
            }
            _out += "<array>\n";
            for (const PlistValue& item : value.arrayValue())
                emit(item, depth + 1);
            indent(depth);
            _out += "</array>\n";
            return;
        case Kind::Dictionary:
            indent(depth);
            if (value.dictionaryValue().empty()) {
                _out += "<dict/>\n";
                return;
            }
            _out += "<dict>\n";
            for (const auto& [key, item] : value.dictionaryValue()) {
                if (item.isNil() || item.kind() == Kind::Class)
                    continue;
                indent(depth + 1);
                _out += "<key>";
                escaped(key);
                _out += "</key>\n";
                emit(item, depth + 1);
            }
            indent(depth);
            _out += "</dict>\n";
            return;
        }
    }

    std::string _out;
};

}  // namespace

std::string iso8601(double seconds)
{
    if (!std::isfinite(seconds))
        seconds = 0;
    // Beyond about 2.9e11 years no calendar arithmetic is meaningful; such dates are clamped.
    constexpr double kLimit = 9.0e18;
    seconds = std::clamp(seconds, -kLimit, kLimit);
    double whole = std::floor(seconds);
    double fraction = seconds - whole;
    auto total = static_cast<std::int64_t>(whole);
    std::int64_t days = total / 86400, rest = total % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    std::int64_t year = 0;
    unsigned month = 0, day = 0;
    civilFromDays(days + kReferenceDays, year, month, day);
    char text[96];
    const char* sign = year < 0 ? "-" : year > 9999 ? "+" : "";
    std::snprintf(text, sizeof text, "%s%04lld-%02u-%02uT%02d:%02d:%02d", sign, static_cast<long long>(year < 0 ? -year : year),
                  month, day, static_cast<int>(rest / 3600), static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60));
    std::string out = text;
    if (fraction > 0) {
        // The fewest decimals that read back as the same double.
        std::string decimals;
        for (int digits = 1; digits <= 17; ++digits) {
            char candidate[40];
            std::snprintf(candidate, sizeof candidate, "%.*f", digits, fraction);
            if (candidate[0] != '0')
                continue;  // rounded up to a whole second
            decimals = candidate + 1;
            if (whole + std::strtod(candidate, nullptr) == seconds)
                break;
        }
        out += decimals;
    }
    out += 'Z';
    return out;
}

std::optional<double> dateFromIso8601(std::string_view text)
{
    std::size_t i = 0;
    auto digits = [&](std::size_t count, std::int64_t& value) {
        value = 0;
        for (std::size_t k = 0; k < count; ++k, ++i) {
            if (i >= text.size() || text[i] < '0' || text[i] > '9')
                return false;
            value = value * 10 + (text[i] - '0');
        }
        return true;
    };
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+'))
        negative = text[i++] == '-';
    std::int64_t year = 0;
    std::size_t yearDigits = 0;
    while (i + yearDigits < text.size() && text[i + yearDigits] >= '0' && text[i + yearDigits] <= '9')
        ++yearDigits;
    if (yearDigits < 4 || yearDigits > 11 || !digits(yearDigits, year))
        return std::nullopt;
    if (negative)
        year = -year;
    std::int64_t month = 1, day = 1, hour = 0, minute = 0, second = 0;
    double fraction = 0;
    auto part = [&](char separator, std::int64_t& value) {
        if (i < text.size() && text[i] == separator) {
            ++i;
            return digits(2, value) ? 1 : -1;
        }
        return 0;
    };
    int found = part('-', month);
    if (found > 0 && (found = part('-', day)) > 0 && (found = part('T', hour)) > 0 && (found = part(':', minute)) > 0 &&
        (found = part(':', second)) > 0 && i < text.size() && text[i] == '.') {
        std::size_t start = i;
        ++i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9')
            ++i;
        if (i == start + 1)
            return std::nullopt;
        fraction = std::strtod(std::string(text.substr(start, i - start)).c_str(), nullptr);
    }
    if (found < 0 || i + 1 != text.size() || text[i] != 'Z')
        return std::nullopt;
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    std::int64_t days = daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) - kReferenceDays;
    double whole = static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second);
    return whole + fraction;
}

namespace {

/// The bytes as a reader takes them: XML in UTF-16 as the same text in UTF-8 (made in transcoded),
/// without a UTF-8 byte-order mark; nothing when they cannot be a property list.
std::optional<std::string_view> readable(std::string_view bytes, std::string& transcoded)
{
    if (bytes.empty() || bytes.size() > std::numeric_limits<std::uint32_t>::max())
        return std::nullopt;
    if (bytes.size() >= 2 && ((bytes[0] == '\xFF' && bytes[1] == '\xFE') || (bytes[0] == '\xFE' && bytes[1] == '\xFF'))) {
        if (bytes.size() % 2 != 0)
            return std::nullopt;
        transcoded = utf16TextToUtf8(bytes.substr(2), bytes[0] == '\xFE');
        bytes = transcoded;
    } else if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    if (bytes.empty())
        return std::nullopt;
    return bytes;
}

}  // namespace

std::string base64(const std::vector<std::uint8_t>& bytes)
{
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t n = bytes[i] << 16;
        if (i + 1 < bytes.size())
            n |= bytes[i + 1] << 8;
        if (i + 2 < bytes.size())
            n |= bytes[i + 2];
        text.push_back(alphabet[(n >> 18) & 63]);
        text.push_back(alphabet[(n >> 12) & 63]);
        text.push_back(i + 1 < bytes.size() ? alphabet[(n >> 6) & 63] : '=');
        text.push_back(i + 2 < bytes.size() ? alphabet[n & 63] : '=');
    }
    return text;
}

std::optional<PlistValue> propertyListWithData(std::string_view bytes)
{
    std::string transcoded;
    auto text = readable(bytes, transcoded);
    if (!text)
        return std::nullopt;
    // A binary plist is checked as it is read; XML is checked before (no recursion past the depth).
    if (text->starts_with(kBinaryMagic))
        return BinaryReader<true>(*text).read();
    if (text->starts_with("bplist") || PropertyListCheck::problem(*text))
        return std::nullopt;
    return XmlReader(*text).read();
}

bool isDictionaryData(std::string_view bytes)
{
    std::string transcoded;
    auto text = readable(bytes, transcoded);
    if (text && text->starts_with(kBinaryMagic))
        return BinaryReader<false>(*text).read() == 0xDu;
    auto parsed = propertyListWithData(bytes);
    return parsed && parsed->kind() == PlistValue::Kind::Dictionary;
}

std::optional<std::string> binaryProblem(std::string_view bytes)
{
    BinaryReader<false> reader(bytes);
    if (reader.read())
        return std::nullopt;
    return reader.problem();
}

struct BinaryPropertyListWriter::Parts : BinaryWriter {};

BinaryPropertyListWriter::BinaryPropertyListWriter()
    : _parts(std::make_unique<Parts>())
{
}

BinaryPropertyListWriter::~BinaryPropertyListWriter() = default;

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::add(const PlistValue& value)
{
    return _parts->emit(value.kind() != PlistValue::Kind::Nil && value.kind() != PlistValue::Kind::Class ? value
                                                                                                         : PlistValue(PlistDictionary{}));
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addData(std::string_view bytes)
{
    return _parts->emitData(bytes);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::addDictionary(std::vector<std::pair<std::string, Reference>> entries)
{
    return _parts->emitDictionary(std::move(entries));
}

std::string_view BinaryPropertyListWriter::finish(Reference top)
{
    return _parts->finish(top);
}

std::string dataWithPropertyList(const PlistValue& value, Format format)
{
    const bool writable = value.kind() != PlistValue::Kind::Nil && value.kind() != PlistValue::Kind::Class;
    const PlistValue& top = writable ? value : PlistValue(PlistDictionary{});
    if (format == Format::Binary)
        return BinaryWriter().write(top);
    return XmlWriter().write(top);
}

}  // namespace PropertyListSerialization
