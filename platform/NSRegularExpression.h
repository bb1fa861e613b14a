#pragma once
// NSRegularExpression over ICU's regular-expression engine (the engine the device's Foundation
// runs), for the patterns the bundle matches file paths with.

#include <memory>
#include <string>
#include <string_view>

class NSRegularExpression {
public:
    enum Options { None = 0, CaseInsensitive = 1 };

    /// The compiled pattern, or nullptr when it is not a valid expression.
    static std::unique_ptr<NSRegularExpression> regularExpressionWithPattern(std::string_view pattern, Options options);
    ~NSRegularExpression();

    /// Whether the expression matches anywhere in text (numberOfMatchesInString: > 0; unanchored).
    bool matches(std::string_view text) const;

private:
    struct Compiled;
    explicit NSRegularExpression(std::unique_ptr<Compiled> compiled);
    std::unique_ptr<Compiled> _compiled;
};
