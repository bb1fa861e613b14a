#include "platform/NSRegularExpression.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cctype>
#include <string>

namespace {

/// Letters and digits every match must hold, in ASCII lower case when matching ignores case: the
/// plain run the pattern starts with (a pattern with an alternative holds none). A text without
/// it cannot match, which is found without running the engine.
std::string requiredLiteral(std::string_view pattern, bool ignoreCase)
{
    if (pattern.find('|') != std::string_view::npos)
        return {};
    std::size_t run = 0;
    while (run < pattern.size() && std::isalnum(static_cast<unsigned char>(pattern[run])))
        ++run;
    if (run < pattern.size() && std::string_view("*+?{").find(pattern[run]) != std::string_view::npos && run > 0)
        --run;  // the last character is quantified
    std::string literal(pattern.substr(0, run));
    if (ignoreCase)
        for (char& c : literal)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return literal;
}

/// Whether ASCII text holds literal (lower case when ignoring case).
bool holds(std::string_view text, std::string_view literal, bool ignoreCase)
{
    if (!ignoreCase)
        return text.find(literal) != std::string_view::npos;
    auto it = std::search(text.begin(), text.end(), literal.begin(), literal.end(),
                          [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
    return it != text.end();
}

}  // namespace

struct NSRegularExpression::Compiled {
    std::unique_ptr<icu::RegexPattern> pattern;
    std::string literal;
    bool ignoreCase = false;
    /// The text last matched, which the matcher refers to.
    icu::UnicodeString subject;
    /// Made on the first match and reset for every later one (the main thread's only).
    std::unique_ptr<icu::RegexMatcher> matcher;
};

NSRegularExpression::NSRegularExpression(std::unique_ptr<Compiled> compiled)
    : _compiled(std::move(compiled))
{
}

NSRegularExpression::~NSRegularExpression() = default;

std::unique_ptr<NSRegularExpression> NSRegularExpression::regularExpressionWithPattern(std::string_view pattern, Options options)
{
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    uint32_t flags = (options & CaseInsensitive) ? UREGEX_CASE_INSENSITIVE : 0;
    auto compiled = std::unique_ptr<icu::RegexPattern>(icu::RegexPattern::compile(
        icu::UnicodeString::fromUTF8(icu::StringPiece(pattern.data(), static_cast<int32_t>(pattern.size()))), flags,
        parseError, status));
    if (U_FAILURE(status) || !compiled)
        return nullptr;
    bool ignoreCase = (options & CaseInsensitive) != 0;
    auto made = std::make_unique<Compiled>();
    made->pattern = std::move(compiled);
    made->literal = requiredLiteral(pattern, ignoreCase);
    made->ignoreCase = ignoreCase;
    return std::unique_ptr<NSRegularExpression>(new NSRegularExpression(std::move(made)));
}

bool NSRegularExpression::matches(std::string_view text) const
{
    Compiled& compiled = *_compiled;
    // In ASCII text only ASCII letters match ASCII letters, whatever the case rules: the required
    // run is looked for first.
    if (!compiled.literal.empty() &&
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }) &&
        !holds(text, compiled.literal, compiled.ignoreCase))
        return false;
    UErrorCode status = U_ZERO_ERROR;
    compiled.subject = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    if (!compiled.matcher) {
        compiled.matcher.reset(compiled.pattern->matcher(compiled.subject, status));
        if (U_FAILURE(status) || !compiled.matcher) {
            compiled.matcher.reset();
            return false;
        }
    } else {
        compiled.matcher->reset(compiled.subject);
    }
    bool found = compiled.matcher->find(status);
    return U_SUCCESS(status) && found;
}
