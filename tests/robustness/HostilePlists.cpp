#include "HostilePlists.h"

#include <cstdint>
#include <vector>

namespace hostile {
namespace {

void bigEndian(std::string& out, std::uint64_t value, std::size_t size)
{
    for (std::size_t i = size; i-- > 0;)
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

/// Object marker with its count (0x0F and an integer object past 14).
void marker(std::string& out, unsigned type, std::uint64_t count)
{
    if (count < 15) {
        out += static_cast<char>((type << 4) | count);
        return;
    }
    out += static_cast<char>((type << 4) | 0x0F);
    out += static_cast<char>(0x13);  // an 8-byte integer
    bigEndian(out, count, 8);
}

/// A binary plist of the given objects (already encoded), object 0 at the top.
std::string binary(const std::vector<std::string>& objects, std::size_t refSize)
{
    std::string out = "bplist00";
    std::vector<std::uint64_t> offsets;
    for (auto& object : objects) {
        offsets.push_back(out.size());
        out += object;
    }
    std::uint64_t table = out.size();
    for (auto offset : offsets)
        bigEndian(out, offset, 8);
    out += std::string(6, '\0');
    out += static_cast<char>(8);
    out += static_cast<char>(refSize);
    bigEndian(out, objects.size(), 8);
    bigEndian(out, 0, 8);
    bigEndian(out, table, 8);
    return out;
}

std::string array(const std::vector<std::uint64_t>& refs, std::size_t refSize)
{
    std::string out;
    marker(out, 0xA, refs.size());
    for (auto ref : refs)
        bigEndian(out, ref, refSize);
    return out;
}

}  // namespace

std::string xmlWithNul()
{
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>name</key><string>a") +
           '\0' + "b</string></dict></plist>\n";
}

std::string binaryWithNul()
{
    std::string dict;
    marker(dict, 0xD, 1);
    dict += '\x01';
    dict += '\x02';
    std::string key = "\x53key";  // ASCII string of 3
    std::string value = std::string("\x53") + "a" + '\0' + "b";
    return binary({dict, key, value}, 1);
}

std::string binaryNested(std::size_t depth)
{
    std::vector<std::string> objects;
    for (std::size_t i = 0; i + 1 < depth; ++i)
        objects.push_back(array({i + 1}, 4));
    objects.push_back(array({}, 4));
    return binary(objects, 4);
}

std::string xmlNested(std::size_t depth)
{
    std::string out = "<plist version=\"1.0\">";
    out.reserve(depth * 15 + 64);
    for (std::size_t i = 0; i < depth; ++i)
        out += "<array>";
    for (std::size_t i = 0; i < depth; ++i)
        out += "</array>";
    return out + "</plist>";
}

std::string binarySharedReferences(std::size_t fan, std::size_t levels)
{
    std::vector<std::string> objects;
    for (std::size_t level = 0; level < levels; ++level)
        objects.push_back(array(std::vector<std::uint64_t>(fan, level + 1), 1));
    objects.push_back("\x51x");
    return binary(objects, 1);
}

std::string binaryCycle()
{
    return binary({array({0}, 1)}, 1);
}

}  // namespace hostile
