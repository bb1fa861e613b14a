#include "platform/NSRegularExpression.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

struct NSRegularExpression::Compiled {
    std::unique_ptr<icu::RegexPattern> pattern;
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
    return std::unique_ptr<NSRegularExpression>(new NSRegularExpression(std::make_unique<Compiled>(Compiled{std::move(compiled)})));
}

bool NSRegularExpression::matches(std::string_view text) const
{
    UErrorCode status = U_ZERO_ERROR;
    Compiled& compiled = *_compiled;
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
