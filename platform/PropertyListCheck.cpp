#include "platform/PropertyListCheck.h"

#include "platform/PropertyListSerialization.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace PropertyListCheck {
namespace {

constexpr std::string_view kBinaryMagic = "bplist00";

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

}  // namespace

std::optional<std::string> problem(std::string_view bytes)
{
    if (bytes.starts_with(kBinaryMagic))
        return PropertyListSerialization::binaryProblem(bytes);
    return xmlProblem(bytes);
}

}  // namespace PropertyListCheck
