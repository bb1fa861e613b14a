#include "host/WebModules.h"

#include "platform/AtomicFile.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <optional>
#include <set>

namespace WebModules {

namespace {

/// A module of the page application is at most this large; a larger file is not read.
constexpr std::size_t kModuleBytes = 1024 * 1024;

bool identifierChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '$';
}

/// "./NAME.js" with a plain file name (what the server serves) gives "NAME.js"; anything else "".
std::string sameFolderModule(std::string_view specifier)
{
    if (specifier.substr(0, 2) != "./")
        return {};
    std::string_view name = specifier.substr(2);
    if (name.size() <= 3 || name.substr(name.size() - 3) != ".js")
        return {};
    for (char c : name.substr(0, name.size() - 3)) {
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != '-')
            return {};
    }
    return std::string(name);
}

/// Reads JavaScript source token by token, as far as finding its import declarations needs: it
/// knows comments, strings, template literals (with their ${…} parts) and regular-expression
/// literals, so that nothing inside them is taken for code.
class Scanner {
public:
    explicit Scanner(std::string_view source) : _s(source) {}

    std::vector<std::string> imports()
    {
        std::vector<std::string> found;
        while (skipSpace(), _i < _s.size()) {
            std::size_t start = _i;
            if (!identifierChar(_s[_i])) {
                punctuation();
                continue;
            }
            std::string_view word = identifier();
            bool member = _previous == '.';
            _previous = 'a';
            _previousWord = word;
            if (member || (word != "import" && word != "export"))
                continue;
            std::optional<std::string> specifier = word == "import" ? importDeclaration() : exportFrom();
            if (!specifier) {
                // Not a declaration after all (import(), import.meta, export const …): read on
                // from just after the keyword.
                _i = start + word.size();
                _previous = 'a';
                _previousWord = word;
                continue;
            }
            if (std::string name = sameFolderModule(*specifier); !name.empty())
                found.push_back(std::move(name));
        }
        return found;
    }

private:
    std::string_view _s;
    std::size_t _i = 0;
    /// The last significant character read ('a' after an identifier or number, '"' after a
    /// string), and the last word: together they tell a regular expression from a division.
    char _previous = ';';
    std::string_view _previousWord;

    bool at(std::string_view text) const { return _s.substr(_i, text.size()) == text; }

    void skipSpace()
    {
        while (_i < _s.size()) {
            if (std::isspace(static_cast<unsigned char>(_s[_i]))) {
                ++_i;
            } else if (at("//")) {
                std::size_t end = _s.find('\n', _i);
                _i = end == std::string_view::npos ? _s.size() : end;
            } else if (at("/*")) {
                std::size_t end = _s.find("*/", _i + 2);
                _i = end == std::string_view::npos ? _s.size() : end + 2;
            } else {
                return;
            }
        }
    }

    std::string_view identifier()
    {
        std::size_t start = _i;
        while (_i < _s.size() && identifierChar(_s[_i]))
            ++_i;
        return _s.substr(start, _i - start);
    }

    /// A quoted string starting at _i; its contents (escapes left as written).
    std::string_view string()
    {
        char quote = _s[_i++];
        std::size_t start = _i;
        while (_i < _s.size() && _s[_i] != quote && _s[_i] != '\n') {
            if (_s[_i] == '\\')
                ++_i;
            ++_i;
        }
        std::size_t end = std::min(_i, _s.size());
        if (_i < _s.size() && _s[_i] == quote)
            ++_i;
        _previous = '"';
        return _s.substr(start, end - start);
    }

    void templateLiteral()
    {
        ++_i;
        while (_i < _s.size()) {
            if (_s[_i] == '\\') {
                _i += 2;
            } else if (_s[_i] == '`') {
                ++_i;
                break;
            } else if (at("${")) {
                _i += 2;
                code('}');
            } else {
                ++_i;
            }
        }
        _previous = '"';
    }

    /// Code up to its closing character (the '}' of a template's ${…}), which it consumes.
    void code(char close)
    {
        int depth = 0;
        while (skipSpace(), _i < _s.size()) {
            char c = _s[_i];
            if (identifierChar(c)) {
                _previousWord = identifier();
                _previous = 'a';
                continue;
            }
            if (c == '{') {
                ++depth;
            } else if (c == close && depth == 0) {
                ++_i;
                _previous = 'a';
                return;
            } else if (c == '}') {
                --depth;
            }
            punctuation();
        }
    }

    bool regexAllowed() const
    {
        static const std::set<std::string_view> keywords = {"return", "typeof", "instanceof", "in", "of", "new",
                                                            "delete", "void", "throw", "case", "do", "else",
                                                            "yield", "await"};
        if (_previous == 'a')
            return keywords.count(_previousWord) > 0;
        return _previous != '"' && _previous != ')' && _previous != ']' && _previous != '}';
    }

    void regex()
    {
        ++_i;
        bool inClass = false;
        while (_i < _s.size() && _s[_i] != '\n') {
            char c = _s[_i];
            if (c == '\\') {
                _i += 2;
                continue;
            }
            ++_i;
            if (c == '[')
                inClass = true;
            else if (c == ']')
                inClass = false;
            else if (c == '/' && !inClass)
                break;
        }
        while (_i < _s.size() && identifierChar(_s[_i]))
            ++_i;
        _previous = '"';
    }

    /// One token that is not an identifier: a string, a template, a regular expression, a number's
    /// dot or any punctuation.
    void punctuation()
    {
        char c = _s[_i];
        if (c == '\'' || c == '"') {
            string();
        } else if (c == '`') {
            templateLiteral();
        } else if (c == '/' && regexAllowed()) {
            regex();
        } else {
            ++_i;
            _previous = c;
        }
    }

    /// After `import`: the specifier of `import './x.js'` or `import … from './x.js'`; nothing for
    /// `import(…)`, `import.meta` or anything that is not a declaration.
    std::optional<std::string> importDeclaration()
    {
        skipSpace();
        if (_i >= _s.size())
            return std::nullopt;
        if (_s[_i] == '\'' || _s[_i] == '"')
            return std::string(string());
        if (_s[_i] == '(' || _s[_i] == '.')
            return std::nullopt;
        return clauseThenFrom();
    }

    /// After `export`: the specifier of `export * [as x] from '…'` or `export { … } from '…'`.
    std::optional<std::string> exportFrom()
    {
        skipSpace();
        if (_i >= _s.size() || (_s[_i] != '*' && _s[_i] != '{'))
            return std::nullopt;
        return clauseThenFrom();
    }

    /// An import or export clause (names, `* as x`, `{ a as b, … }`), then `from` and its string.
    std::optional<std::string> clauseThenFrom()
    {
        bool inBraces = false;
        while (skipSpace(), _i < _s.size()) {
            char c = _s[_i];
            if (identifierChar(c)) {
                std::string_view word = identifier();
                if (word == "from" && !inBraces) {
                    skipSpace();
                    if (_i < _s.size() && (_s[_i] == '\'' || _s[_i] == '"'))
                        return std::string(string());
                    return std::nullopt;
                }
            } else if (c == '{' && !inBraces) {
                inBraces = true;
                ++_i;
            } else if (c == '}' && inBraces) {
                inBraces = false;
                ++_i;
            } else if (c == ',' || c == '*') {
                ++_i;
            } else if ((c == '\'' || c == '"') && inBraces) {
                string();  // an arbitrary export name: { "a-b" as c }
            } else {
                return std::nullopt;
            }
        }
        return std::nullopt;
    }
};

std::optional<std::string> readModule(const std::filesystem::path& file)
{
    return AtomicFile::read(file, kModuleBytes, AtomicFile::Links::Refuse);
}

}  // namespace

std::vector<std::string> imports(std::string_view source)
{
    return Scanner(source).imports();
}

std::vector<std::string> graph(const std::filesystem::path& folder, const std::string& entry)
{
    std::vector<std::string> order;
    std::set<std::string> seen = {entry};
    std::deque<std::string> next = {entry};
    while (!next.empty()) {
        std::string name = std::move(next.front());
        next.pop_front();
        std::optional<std::string> source = readModule(folder / name);
        if (!source)
            continue;
        order.push_back(name);
        for (std::string& imported : imports(*source)) {
            if (seen.insert(imported).second)
                next.push_back(std::move(imported));
        }
    }
    return order;
}

std::string withPreloads(const std::string& html, const std::filesystem::path& folder)
{
    static constexpr std::string_view kScript = "<script type=\"module\" src=\"/";
    std::string out;
    std::set<std::string> listed;
    std::size_t from = 0;
    for (std::size_t at; (at = html.find(kScript, from)) != std::string::npos;) {
        std::size_t nameStart = at + kScript.size();
        std::size_t nameEnd = html.find('"', nameStart);
        if (nameEnd == std::string::npos)
            break;
        std::string entry = sameFolderModule("./" + html.substr(nameStart, nameEnd - nameStart));
        // The tag's indentation, so that the links line up with it.
        std::size_t lineStart = html.rfind('\n', at);
        lineStart = lineStart == std::string::npos ? 0 : lineStart + 1;
        std::string indent = html.substr(lineStart, at - lineStart);
        if (indent.find_first_not_of(" \t") != std::string::npos)
            indent.clear();
        out.append(html, from, at - from);
        if (!entry.empty()) {
            listed.insert(entry);
            std::vector<std::string> modules = graph(folder, entry);
            for (std::size_t i = 1; i < modules.size(); ++i) {
                if (!listed.insert(modules[i]).second)
                    continue;
                out += "<link rel=\"modulepreload\" href=\"/" + modules[i] + "\">\n" + indent;
            }
        }
        from = at;
        out.append(html, from, nameEnd - from);
        from = nameEnd;
    }
    out.append(html, from, std::string::npos);
    return out;
}

}  // namespace WebModules
