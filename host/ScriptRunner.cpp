#include "host/ScriptRunner.h"

#include "platform/Events.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>

namespace {

std::string_view trim(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\r'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

/// Splits off the first whitespace-separated word.
std::string_view nextWord(std::string_view& rest)
{
    rest = trim(rest);
    std::size_t end = rest.find_first_of(" \t");
    std::string_view word = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : trim(rest.substr(end));
    return word;
}

std::string_view requireWord(std::string_view& rest, const char* what)
{
    std::string_view word = nextWord(rest);
    if (word.empty())
        throw CommandError(std::string("missing ") + what);
    return word;
}

void requireEnd(std::string_view rest)
{
    if (!trim(rest).empty())
        throw CommandError("unexpected \"" + std::string(trim(rest)) + "\" at the end of the line");
}

std::string unquoted(std::string_view text)
{
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"')
        return parseScriptValue(text).stringValue();
    return std::string(text);
}

/// One JSON line; bytes that are not UTF-8 (in a malformed script line, say) become U+FFFD.
std::string jsonLine(const Session::Json& value)
{
    return value.dump(-1, ' ', false, Session::Json::error_handler_t::replace);
}

}  // namespace

PlistValue parseScriptValue(std::string_view text)
{
    text = trim(text);
    if (text == "true")
        return PlistValue(true);
    if (text == "false")
        return PlistValue(false);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        std::string value;
        for (std::size_t i = 1; i + 1 < text.size(); ++i) {
            char c = text[i];
            if (c == '"')
                throw CommandError("a quote inside a string must be written \\\"");
            if (c != '\\') {
                value += c;
                continue;
            }
            if (++i + 1 >= text.size())
                throw CommandError("a string ends in an unfinished escape");
            switch (text[i]) {
            case '"': value += '"'; break;
            case '\\': value += '\\'; break;
            case 'n': value += '\n'; break;
            case 't': value += '\t'; break;
            default: throw CommandError(std::string("unknown escape \\") + text[i]);
            }
        }
        return PlistValue(std::move(value));
    }
    bool real = text.find_first_of(".eE") != std::string_view::npos;
    if (!real) {
        long long integer = 0;
        auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), integer);
        if (!text.empty() && error == std::errc() && end == text.data() + text.size())
            return PlistValue(integer);
    } else {
        std::string copy(text);
        char* end = nullptr;
        double number = std::strtod(copy.c_str(), &end);
        bool digitsOnly = copy.find_first_not_of("+-0123456789.eE") == std::string::npos;
        if (digitsOnly && end == copy.c_str() + copy.size() && std::isfinite(number))
            return PlistValue(number);
    }
    throw CommandError("malformed value \"" + std::string(text) + "\" (true, false, a number or a \"string\")");
}

void runScriptLine(Session& session, std::string_view line, std::ostream& out)
{
    std::string_view rest = line;
    std::string command(nextWord(rest));
    if (command == "open") {
        std::string name(requireWord(rest, "page controller class"));
        requireEnd(rest);
        session.open(name);
    } else if (command == "set") {
        std::string key(requireWord(rest, "key"));
        session.set(key, parseScriptValue(rest));
    } else if (command == "write") {
        std::string domain(requireWord(rest, "domain"));
        std::string key(requireWord(rest, "key"));
        session.write(domain, key, parseScriptValue(rest));
    } else if (command == "tap") {
        std::string id(requireWord(rest, "row id"));
        requireEnd(rest);
        session.tap(id);
    } else if (command == "call") {
        std::string name(requireWord(rest, "action name"));
        requireEnd(rest);
        session.call(name);
    } else if (command == "alert") {
        if (trim(rest).empty())
            throw CommandError("missing action title");
        session.alert(unquoted(trim(rest)));
    } else if (command == "wait") {
        PlistValue seconds = parseScriptValue(requireWord(rest, "seconds"));
        requireEnd(rest);
        if (!seconds.isNumber() || seconds.isBoolean())
            throw CommandError("wait takes a number of seconds");
        session.wait(seconds.doubleValue());
    } else if (command == "reload") {
        requireEnd(rest);
        session.reload();
    } else if (command == "back") {
        requireEnd(rest);
        session.back();
    } else if (command == "pick") {
        std::vector<std::string> identifiers;
        for (std::string_view word = nextWord(rest); !word.empty(); word = nextWord(rest))
            identifiers.emplace_back(word);
        session.pick(identifiers);
    } else if (command == "image") {
        if (trim(rest).empty())
            throw CommandError("missing image path");
        session.image(unquoted(trim(rest)));
    } else if (command == "removeimage") {
        std::string id(requireWord(rest, "row id"));
        requireEnd(rest);
        session.removeImage(id);
    } else if (command == "cancel") {
        requireEnd(rest);
        session.cancel();
    } else if (command == "move") {
        PlistValue from = parseScriptValue(requireWord(rest, "source row"));
        PlistValue to = parseScriptValue(requireWord(rest, "destination row"));
        requireEnd(rest);
        if (from.kind() != PlistValue::Kind::Integer || to.kind() != PlistValue::Kind::Integer || from.integerValue() < 0 ||
            to.integerValue() < 0)
            throw CommandError("move takes two row indexes");
        session.move(static_cast<std::size_t>(from.integerValue()), static_cast<std::size_t>(to.integerValue()));
    } else if (command == "scroll") {
        PlistValue y = parseScriptValue(requireWord(rest, "offset"));
        requireEnd(rest);
        if (!y.isNumber() || y.isBoolean())
            throw CommandError("scroll takes a vertical offset in points");
        session.scroll(y.doubleValue());
    } else if (command == "show") {
        requireEnd(rest);
        out << jsonLine(session.show()) << '\n';
    } else if (command == "rows") {
        requireEnd(rest);
        out << jsonLine(session.rows()) << '\n';
    } else if (command == "events") {
        requireEnd(rest);
        session.commit();
        out << jsonLine(session.events()) << '\n';
    } else if (command == "file") {
        if (trim(rest).empty())
            throw CommandError("missing path");
        out << jsonLine(session.file(unquoted(trim(rest)))) << '\n';
    } else {
        throw CommandError("unknown command \"" + command + "\"");
    }
    session.commit();
}

int runScript(Session& session, std::istream& in, std::ostream& out, std::ostream& diagnostics)
{
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        std::string_view text = trim(line);
        if (text.empty() || text.front() == '#')
            continue;
        std::size_t reported = session.process().events().pending().size();
        try {
            runScriptLine(session, text, out);
        } catch (const std::exception& error) {
            out << jsonLine({{"error", error.what()}, {"line", number}}) << std::endl;
            return 1;
        }
        // Problems that are no failure of the command (an unreadable page definition) go to the
        // diagnostics as they happen; they stay in the event log too.
        auto& pending = session.process().events().pending();
        for (std::size_t i = std::min(reported, pending.size()); i < pending.size(); ++i)
            if (auto* error = std::get_if<Events::Error>(&pending[i]))
                diagnostics << "nimbra-prefs: line " << number << ": " << error->message << '\n';
    }
    out.flush();
    return 0;
}
