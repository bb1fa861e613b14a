#include "platform/PropertyListCheck.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace PropertyListCheck {
namespace {

constexpr std::string_view kBinaryMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

std::optional<std::string> xmlProblem(std::string_view text)
{
    if (text.find('\0') != std::string_view::npos)
        return "a NUL byte";
    // Character references: &#NNN; and &#xHH; may not name U+0000 or lie past U+10FFFF.
    for (std::size_t at = text.find("&#"); at != std::string_view::npos; at = text.find("&#", at + 2)) {
        std::size_t i = at + 2;
        bool hex = i < text.size() && (text[i] == 'x' || text[i] == 'X');
        i += hex;
        std::uint64_t value = 0;
        std::size_t digits = 0;
        for (; i < text.size() && std::isxdigit(static_cast<unsigned char>(text[i])); ++i) {
            if (!hex && !std::isdigit(static_cast<unsigned char>(text[i])))
                break;
            int digit = std::isdigit(static_cast<unsigned char>(text[i])) ? text[i] - '0'
                                                                           : std::tolower(static_cast<unsigned char>(text[i])) - 'a' + 10;
            value = std::min<std::uint64_t>(value * (hex ? 16 : 10) + digit, 0x110000);
            ++digits;
        }
        if (digits > 0 && (value == 0 || value > 0x10FFFF))
            return "a character reference to U+0000 or past U+10FFFF";
    }
    // Element nesting, counting every element that is opened and not closed at once.
    std::size_t depth = 0;
    auto skipPast = [&](std::size_t from, std::string_view end) {
        std::size_t found = text.find(end, from);
        return found == std::string_view::npos ? text.size() : found + end.size();
    };
    for (std::size_t at = text.find('<'); at != std::string_view::npos && at < text.size(); at = text.find('<', at)) {
        std::string_view rest = text.substr(at);
        if (rest.starts_with("<!--")) {
            at = skipPast(at + 4, "-->");
        } else if (rest.starts_with("<![CDATA[")) {
            at = skipPast(at + 9, "]]>");
        } else if (rest.starts_with("<?")) {
            at = skipPast(at + 2, "?>");
        } else if (rest.starts_with("<!")) {
            at = skipPast(at + 2, ">");
        } else if (rest.starts_with("</")) {
            depth -= depth > 0;
            at = skipPast(at + 2, ">");
        } else {
            std::size_t close = text.find('>', at + 1);
            if (close == std::string_view::npos)
                break;
            if (text[close - 1] != '/' && ++depth > kMaxDepth + 2)
                return "elements nested deeper than " + std::to_string(kMaxDepth + 2) + " levels";
            at = close + 1;
        }
    }
    return std::nullopt;
}

/// A binary property list's objects, read with every offset checked.
class BinaryPlist {
public:
    explicit BinaryPlist(std::string_view bytes)
        : _bytes(bytes)
    {
    }

    std::optional<std::string> problem()
    {
        if (auto bad = readTrailer())
            return bad;
        return walk();
    }

private:
    /// What one object holds: the references of a container, the bytes of a leaf.
    struct Object {
        std::uint64_t refs = 0;        // where its references start (containers)
        std::uint64_t refCount = 0;    // how many references (a dictionary's keys and values)
        std::uint64_t payload = 0;     // bytes of string or data it expands to (leaves)
        bool container = false;
    };

    std::uint64_t number(std::uint64_t at, std::size_t size) const
    {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = (value << 8) | static_cast<std::uint8_t>(_bytes[at + i]);
        return value;
    }

    std::optional<std::string> readTrailer()
    {
        if (_bytes.size() < kBinaryMagic.size() + 1 + kTrailerSize)
            return "a binary plist too short for its trailer";
        std::uint64_t trailer = _bytes.size() - kTrailerSize;
        _offsetSize = static_cast<std::uint8_t>(_bytes[trailer + 6]);
        _refSize = static_cast<std::uint8_t>(_bytes[trailer + 7]);
        _count = number(trailer + 8, 8);
        _top = number(trailer + 16, 8);
        _table = number(trailer + 24, 8);
        if (_offsetSize < 1 || _offsetSize > 8 || _refSize < 1 || _refSize > 8)
            return "a binary plist with a bad offset or reference size";
        if (_count == 0 || _top >= _count || _table < kBinaryMagic.size() || _table >= trailer ||
            _count > (trailer - _table) / _offsetSize)
            return "a binary plist with a bad offset table";
        return std::nullopt;
    }

    /// Reads object index's marker and size; nothing when it lies outside the objects.
    std::optional<Object> object(std::uint64_t index, const char*& why) const
    {
        std::uint64_t at = number(_table + index * _offsetSize, _offsetSize);
        const std::uint64_t end = _table;
        why = "an object outside the file";
        if (at < kBinaryMagic.size() || at >= end)
            return std::nullopt;
        auto marker = static_cast<std::uint8_t>(_bytes[at]);
        unsigned type = marker >> 4, low = marker & 0x0F;
        std::uint64_t content = at + 1, length = low;
        bool counted = type == 0x4 || type == 0x5 || type == 0x6 || type == 0x7 || type == 0xA || type == 0xC || type == 0xD;
        if (counted && low == 0x0F) {
            if (content >= end)
                return std::nullopt;
            auto sizeMarker = static_cast<std::uint8_t>(_bytes[content]);
            std::size_t size = std::size_t{1} << (sizeMarker & 0x0F);
            if ((sizeMarker >> 4) != 0x1 || size > 8 || end - content - 1 < size)
                return std::nullopt;
            length = number(content + 1, size);
            content += 1 + size;
        }
        std::uint64_t room = end - content;
        auto fits = [&](std::uint64_t units, std::uint64_t unitSize) { return units <= room / unitSize; };
        Object found;
        switch (type) {
        case 0x1: case 0x2:
            if (low > 4 || !fits(std::uint64_t{1} << low, 1))
                return std::nullopt;
            break;
        case 0x3:
            if (!fits(8, 1))
                return std::nullopt;
            break;
        case 0x4:
            if (!fits(length, 1))
                return std::nullopt;
            found.payload = length;
            break;
        case 0x5: case 0x7:
            if (!fits(length, 1))
                return std::nullopt;
            why = "a string holding a NUL byte";
            if (std::memchr(_bytes.data() + content, 0, length))
                return std::nullopt;
            found.payload = length;
            break;
        case 0x6:
            if (!fits(length, 2))
                return std::nullopt;
            why = "a string holding a NUL character";
            for (std::uint64_t i = 0; i < length; ++i)
                if (_bytes[content + 2 * i] == 0 && _bytes[content + 2 * i + 1] == 0)
                    return std::nullopt;
            found.payload = length * 3;  // as UTF-8
            break;
        case 0x8:
            if (!fits(low + 1, 1))
                return std::nullopt;
            break;
        case 0xA: case 0xC: case 0xD: {
            std::uint64_t refs = type == 0xD ? length * 2 : length;
            if ((type == 0xD && length > UINT64_MAX / 2) || !fits(refs, _refSize))
                return std::nullopt;
            found.container = true;
            found.refs = content;
            found.refCount = refs;
            break;
        }
        default:
            break;  // null, booleans, fill and unknown markers hold nothing more (libplist refuses the last)
        }
        return found;
    }

    /// Every object reached from the top, depth first without recursion: each container's depth,
    /// node count and bytes once all its references are expanded into copies.
    std::optional<std::string> walk()
    {
        enum : std::uint8_t { Unseen, Open, Done };
        struct Totals {
            std::uint64_t nodes = 0, bytes = 0, depth = 0;
        };
        struct Frame {
            std::uint64_t index;
            Object object;
            std::uint64_t next = 0;
            Totals totals;
        };
        // Only containers are marked: a leaf met again is read again, at the cost of reading it.
        std::vector<std::uint8_t> state(_count, Unseen);
        std::unordered_map<std::uint64_t, Totals> done;
        std::vector<Frame> path;
        const char* why = "";

        // Adds a finished object's totals into its container (or checks the whole at the top).
        auto add = [&](const Totals& child) -> std::optional<std::string> {
            if (path.size() + child.depth > kMaxDepth)
                return "containers nested deeper than " + std::to_string(kMaxDepth) + " levels";
            if (path.empty())
                return std::nullopt;
            Totals& totals = path.back().totals;
            totals.nodes = std::min<std::uint64_t>(totals.nodes + child.nodes, kMaxNodes + 1);
            totals.bytes = std::min<std::uint64_t>(totals.bytes + child.bytes, kMaxExpandedBytes + 1);
            totals.depth = std::max(totals.depth, child.depth);
            if (totals.nodes > kMaxNodes)
                return "more than " + std::to_string(kMaxNodes) + " values once its references are expanded";
            if (totals.bytes > kMaxExpandedBytes)
                return "more than " + std::to_string(kMaxExpandedBytes >> 20) + " MiB once its references are expanded";
            return std::nullopt;
        };
        // Starts on an object: a leaf is finished at once, a container goes on the path.
        auto visit = [&](std::uint64_t index) -> std::optional<std::string> {
            if (state[index] == Open)
                return std::string("a container that contains itself");
            if (state[index] == Done)
                return add(done[index]);
            auto found = object(index, why);
            if (!found)
                return std::string(why);
            if (!found->container)
                return add({1, found->payload, 0});
            state[index] = Open;
            path.push_back({index, *found, 0, {1, 0, 0}});
            if (path.size() > kMaxDepth)
                return "containers nested deeper than " + std::to_string(kMaxDepth) + " levels";
            return std::nullopt;
        };

        if (auto bad = visit(_top))
            return bad;
        while (!path.empty()) {
            Frame& frame = path.back();
            if (frame.next < frame.object.refCount) {
                std::uint64_t child = number(frame.object.refs + frame.next++ * _refSize, _refSize);
                if (child >= _count)
                    return std::string("a reference to an object that does not exist");
                if (auto bad = visit(child))
                    return bad;
                continue;
            }
            Totals totals = frame.totals;
            totals.depth += 1;
            std::uint64_t index = frame.index;
            path.pop_back();
            state[index] = Done;
            done[index] = totals;
            if (auto bad = add(totals))
                return bad;
        }
        return std::nullopt;
    }

    std::string_view _bytes;
    std::uint8_t _offsetSize = 0, _refSize = 0;
    std::uint64_t _count = 0, _top = 0, _table = 0;
};

}  // namespace

std::optional<std::string> problem(std::string_view bytes)
{
    if (bytes.starts_with(kBinaryMagic))
        return BinaryPlist(bytes).problem();
    return xmlProblem(bytes);
}

}  // namespace PropertyListCheck
